#include "station/accessible.h"

#include <gio/gio.h>

namespace station {

namespace {

constexpr const char* kAccessible = "org.a11y.atspi.Accessible";
constexpr const char* kText = "org.a11y.atspi.Text";
constexpr int kPatienceOfCalls = 5000;
// Bits of the protocol's state set.
constexpr int kChecked = 4;
constexpr int kFocused = 12;
constexpr int kSensitive = 24;
constexpr std::uint32_t kInWindow = 1;

struct Unreference {
  void operator()(GVariant* value) const { g_variant_unref(value); }
};
using Value = std::unique_ptr<GVariant, Unreference>;

GDBusConnection* connectTo(const std::string& address) {
  return g_dbus_connection_new_for_address_sync(
      address.c_str(),
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                        G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
      nullptr, nullptr, nullptr);
}

// The arguments are taken. Null when the call fails: the other side may have gone.
Value callOn(GDBusConnection* connection, const std::string& owner, const std::string& path,
             const char* interface, const char* method, GVariant* arguments) {
  return Value(g_dbus_connection_call_sync(connection, owner.c_str(), path.c_str(), interface, method,
                                           arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, kPatienceOfCalls,
                                           nullptr, nullptr));
}

template <class Target>
bool read(const Value& value, const char* type, Target* target) {
  if (value == nullptr || g_variant_is_of_type(value.get(), G_VARIANT_TYPE(type)) == FALSE) {
    return false;
  }
  g_variant_get(value.get(), type, target);
  return true;
}

std::string readText(const Value& value, const char* type) {
  char* text = nullptr;
  if (!read(value, type, &text)) {
    return "";
  }
  std::string result = text;
  g_free(text);
  return result;
}

}  // namespace

// The connection of assistive technology to the programs of one session.
class AccessibilityBus {
 public:
  // Null when the session has none yet.
  static std::shared_ptr<AccessibilityBus> of(const std::string& sessionBus) {
    GDBusConnection* session = connectTo(sessionBus);
    if (session == nullptr) {
      return nullptr;
    }
    const std::string address = readText(
        callOn(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", nullptr), "(s)");
    g_object_unref(session);
    GDBusConnection* connection = address.empty() ? nullptr : connectTo(address);
    return connection == nullptr ? nullptr
                                 : std::shared_ptr<AccessibilityBus>(new AccessibilityBus(connection));
  }
  ~AccessibilityBus() { g_object_unref(connection_); }
  AccessibilityBus(const AccessibilityBus&) = delete;
  AccessibilityBus& operator=(const AccessibilityBus&) = delete;

  Value call(const std::string& owner, const std::string& path, const char* interface, const char* method,
             GVariant* arguments = nullptr) const {
    return callOn(connection_, owner, path, interface, method, arguments);
  }
  Value property(const std::string& owner, const std::string& path, const char* interface,
                 const char* name) const {
    const Value answer =
        call(owner, path, "org.freedesktop.DBus.Properties", "Get", g_variant_new("(ss)", interface, name));
    GVariant* inner = nullptr;
    read(answer, "(v)", &inner);
    return Value(inner);
  }
  pid_t processOf(const std::string& owner) const {
    const Value answer = call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                              "GetConnectionUnixProcessID", g_variant_new("(s)", owner.c_str()));
    std::uint32_t process = 0;
    read(answer, "(u)", &process);
    return static_cast<pid_t>(process);
  }
  std::vector<std::pair<std::string, std::string>> children(const std::string& owner,
                                                            const std::string& path) const {
    std::vector<std::pair<std::string, std::string>> found;
    const Value answer = call(owner, path, kAccessible, "GetChildren");
    GVariantIter* list = nullptr;
    if (read(answer, "(a(so))", &list)) {
      const char* childOwner = nullptr;
      const char* childPath = nullptr;
      while (g_variant_iter_loop(list, "(&s&o)", &childOwner, &childPath) != FALSE) {
        found.emplace_back(childOwner, childPath);
      }
      g_variant_iter_free(list);
    }
    return found;
  }

 private:
  explicit AccessibilityBus(GDBusConnection* connection) : connection_(connection) {}

  GDBusConnection* connection_;
};

std::string Accessible::name() const {
  return readText(bus_->property(owner_, path_, kAccessible, "Name"), "s");
}

std::string Accessible::role() const {
  return readText(bus_->call(owner_, path_, kAccessible, "GetRoleName"), "(s)");
}

bool Accessible::has(int state) const {
  const Value answer = bus_->call(owner_, path_, kAccessible, "GetState");
  GVariantIter* words = nullptr;
  if (!read(answer, "(au)", &words)) {
    return false;
  }
  std::uint64_t bits = 0;
  std::uint32_t word = 0;
  for (int shift = 0; g_variant_iter_loop(words, "u", &word) != FALSE && shift < 64; shift += 32) {
    bits |= static_cast<std::uint64_t>(word) << shift;
  }
  g_variant_iter_free(words);
  return (bits >> state & 1) != 0;
}

bool Accessible::isSensitive() const {
  return parentsSensitive_ && has(kSensitive);
}

bool Accessible::isFocused() const {
  return has(kFocused);
}

bool Accessible::isChecked() const {
  return has(kChecked);
}

std::string Accessible::text() const {
  std::int32_t count = 0;
  read(bus_->property(owner_, path_, kText, "CharacterCount"), "i", &count);
  return readText(bus_->call(owner_, path_, kText, "GetText", g_variant_new("(ii)", 0, count)), "(s)");
}

Area Accessible::extents() const {
  const Value answer =
      bus_->call(owner_, path_, "org.a11y.atspi.Component", "GetExtents", g_variant_new("(u)", kInWindow));
  Area area;
  if (answer != nullptr && g_variant_is_of_type(answer.get(), G_VARIANT_TYPE("((iiii))")) != FALSE) {
    g_variant_get(answer.get(), "((iiii))", &area.x, &area.y, &area.width, &area.height);
  }
  return area;
}

std::vector<Accessible> Accessible::children() const {
  // The toolkit tells the state of each widget by itself. The program as a whole has none.
  const bool sensitive = isSensitive() || role() == "application";
  std::vector<Accessible> found;
  for (const auto& [owner, path] : bus_->children(owner_, path_)) {
    found.emplace_back(bus_, owner, path, sensitive);
  }
  return found;
}

void Accessible::walk(const std::function<void(const Accessible&, int)>& visit, int depth) const {
  visit(*this, depth);
  for (const Accessible& child : children()) {
    child.walk(visit, depth + 1);
  }
}

std::optional<Accessible> Accessible::find(const std::string& role, const std::string& name) const {
  // What other processes show is asked last, for a page whose script never ends answers no call.
  std::vector<Accessible> ofOthers;
  auto found = findOwn(role, name, ofOthers);
  for (std::size_t next = 0; !found && next < ofOthers.size(); ++next) {
    found = ofOthers[next].find(role, name);
  }
  return found;
}

std::optional<Accessible> Accessible::findOwn(const std::string& role, const std::string& name,
                                              std::vector<Accessible>& ofOthers) const {
  if (this->role() == role && this->name() == name) {
    return *this;
  }
  for (const Accessible& child : children()) {
    if (child.owner_ != owner_) {
      ofOthers.push_back(child);
    } else if (auto found = child.findOwn(role, name, ofOthers)) {
      return found;
    }
  }
  return std::nullopt;
}

bool Accessible::press() const {
  const Value answer =
      bus_->call(owner_, path_, "org.a11y.atspi.Action", "DoAction", g_variant_new("(i)", 0));
  gboolean done = FALSE;
  return read(answer, "(b)", &done) && done != FALSE;
}

bool Accessible::write(const std::string& text) const {
  const Value answer = bus_->call(owner_, path_, "org.a11y.atspi.EditableText", "SetTextContents",
                                  g_variant_new("(s)", text.c_str()));
  gboolean done = FALSE;
  return read(answer, "(b)", &done) && done != FALSE;
}

std::optional<Accessible> accessibleProgram(const std::string& sessionBus, pid_t process) {
  const auto bus = AccessibilityBus::of(sessionBus);
  if (bus == nullptr) {
    return std::nullopt;
  }
  for (const auto& [owner, path] :
       bus->children("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")) {
    if (bus->processOf(owner) == process) {
      return Accessible(bus, owner, path);
    }
  }
  return std::nullopt;
}

std::string description(const Accessible& accessible) {
  std::string text;
  accessible.walk([&text](const Accessible& item, int depth) {
    text += std::string(static_cast<std::size_t>(depth) * 2, ' ') + item.role() + " \"" + item.name() + "\"" +
            (item.isSensitive() ? "" : " insensitive") + (item.isFocused() ? " focused" : "") + "\n";
  });
  return text;
}

}  // namespace station
