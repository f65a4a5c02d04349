#include "server.h"

#include <set>
#include <utility>

#include <libsoup/soup.h>

#include "access_log.h"
#include "options.h"
#include "text.h"

namespace juniva {
namespace {

template <typename T>
struct Unref {
  void operator()(T* object) const { g_object_unref(object); }
};
template <typename T>
using Owned = std::unique_ptr<T, Unref<T>>;

std::string textOf(const char* text) {
  return text == nullptr ? std::string() : std::string(text);
}

std::string timeNow() {
  GDateTime* now = g_date_time_new_now_local();
  char* text = g_date_time_format(now, "%Y-%m-%dT%H:%M:%S");
  char milliseconds[8];
  g_snprintf(milliseconds, sizeof milliseconds, ".%03d", g_date_time_get_microsecond(now) / 1000);
  std::string result = textOf(text) + milliseconds;
  g_free(text);
  g_date_time_unref(now);
  return result;
}

// A body is read on and thrown away up to here, so that its sender gets to read the 413; then the line is
// cut.
constexpr std::string_view kUnreadable = "The photo server cannot read this request.\n";
constexpr long long kMaximumDrainedBytes = 64 * kMaximumBodyBytes;

}  // namespace

class Server::Impl {
 public:
  explicit Impl(Callbacks callbacks)
      : mCallbacks(std::move(callbacks)),
        mServer(SOUP_SERVER(g_object_new(SOUP_TYPE_SERVER, "raw-paths", TRUE, nullptr))) {
    g_signal_connect(mServer.get(), "request-started", G_CALLBACK(&Impl::onStarted), this);
    g_signal_connect(mServer.get(), "request-aborted", G_CALLBACK(&Impl::onAborted), this);
    g_signal_connect(mServer.get(), "request-finished", G_CALLBACK(&Impl::onFinished), this);
    soup_server_add_handler(mServer.get(), nullptr, &Impl::onRequest, this, nullptr);
  }

  ~Impl() {
    while (!mWaits.empty()) endWait(*mWaits.begin());
    g_signal_handlers_disconnect_by_data(mServer.get(), this);
    soup_server_disconnect(mServer.get());
  }

  SoupServer* server() const { return mServer.get(); }

 private:
  // A response that goes out later, or a silent connection that is held open. Owned by mWaits.
  struct Wait {
    Impl* owner;
    Owned<SoupServerMessage> message;
    Owned<GIOStream> stream;  // of a silent connection only
    Response response;
    guint timer = 0;
    GSource* hangUp = nullptr;
    gulong disconnected = 0;
  };

  // What is known of one request while it runs; it belongs to the message.
  struct Exchange {
    long long received = 0;
    bool tooLarge = false;
    bool logged = false;
  };

  static Exchange& exchangeOf(SoupServerMessage* message) {
    auto* exchange = static_cast<Exchange*>(g_object_get_data(G_OBJECT(message), "juniva-exchange"));
    if (exchange == nullptr) {
      exchange = new Exchange;
      g_object_set_data_full(G_OBJECT(message), "juniva-exchange", exchange,
                             [](gpointer data) { delete static_cast<Exchange*>(data); });
    }
    return *exchange;
  }

  static void onStarted(SoupServer*, SoupServerMessage* message, gpointer) {
    exchangeOf(message);
    // Set this early, they are on the answers too that libsoup makes by itself to what it cannot read.
    nameServer(message);
    soup_server_message_set_response(message, "text/plain; charset=utf-8", SOUP_MEMORY_STATIC,
                                     kUnreadable.data(), kUnreadable.size());
    g_signal_connect(message, "got-headers", G_CALLBACK(&Impl::onHeaders), nullptr);
    g_signal_connect(message, "got-chunk", G_CALLBACK(&Impl::onChunk), nullptr);
  }

  static void nameServer(SoupServerMessage* message) {
    const std::string name = "Lumo-Juniva/" + std::string(kVersion);
    soup_message_headers_replace(soup_server_message_get_response_headers(message), "Server", name.c_str());
  }

  static void onHeaders(SoupServerMessage* message, gpointer) {
    const auto length =
        soup_message_headers_get_content_length(soup_server_message_get_request_headers(message));
    if (length > kMaximumBodyBytes) stopCollecting(message);
  }

  static void onChunk(SoupServerMessage* message, GBytes* chunk, gpointer) {
    Exchange& exchange = exchangeOf(message);
    exchange.received += static_cast<long long>(g_bytes_get_size(chunk));
    if (exchange.received > kMaximumBodyBytes) stopCollecting(message);
    if (exchange.received > kMaximumDrainedBytes) {
      if (GSocket* socket = soup_server_message_get_socket(message)) {
        g_socket_shutdown(socket, TRUE, TRUE, nullptr);
      }
    }
  }

  static void stopCollecting(SoupServerMessage* message) {
    Exchange& exchange = exchangeOf(message);
    if (exchange.tooLarge) return;
    exchange.tooLarge = true;
    SoupMessageBody* body = soup_server_message_get_request_body(message);
    soup_message_body_set_accumulate(body, FALSE);
    soup_message_body_truncate(body);
  }

  static void onRequest(SoupServer*, SoupServerMessage* message, const char*, GHashTable*, gpointer data) {
    auto* self = static_cast<Impl*>(data);
    if (exchangeOf(message).tooLarge) {
      self->send(message, self->mCallbacks.bodyTooLarge());
      return;
    }
    Response response = self->mCallbacks.answer(requestOf(message));
    if (response.silent) {
      self->stayMute(message, std::move(response));
    } else if (response.delay.count() > 0) {
      self->sendLater(message, std::move(response));
    } else {
      self->send(message, response);
    }
  }

  static Request requestOf(SoupServerMessage* message) {
    GUri* uri = soup_server_message_get_uri(message);
    Request request;
    request.method = textOf(soup_server_message_get_method(message));
    const std::string path = textOf(g_uri_get_path(uri));
    request.path = percentDecode(path, false).value_or(path);
    request.query = textOf(g_uri_get_query(uri));
    request.contentType = textOf(
        soup_message_headers_get_one(soup_server_message_get_request_headers(message), "Content-Type"));
    GBytes* body = soup_message_body_flatten(soup_server_message_get_request_body(message));
    gsize size = 0;
    const auto* bytes = static_cast<const char*>(g_bytes_get_data(body, &size));
    if (bytes != nullptr) request.body.assign(bytes, size);
    g_bytes_unref(body);
    return request;
  }

  void send(SoupServerMessage* message, const Response& response) {
    SoupMessageHeaders* headers = soup_server_message_get_response_headers(message);
    // A "100 Continue" before the answer has used up the headers that were set so far.
    nameServer(message);
    for (const Header& header : response.headers) {
      soup_message_headers_replace(headers, header.name.c_str(), header.value.c_str());
    }
    soup_server_message_set_status(message, static_cast<guint>(response.status), nullptr);
    // A body is appended to what is there: the text for an unreadable request.
    soup_message_body_truncate(soup_server_message_get_response_body(message));
    soup_server_message_set_response(message, response.contentType.c_str(), SOUP_MEMORY_COPY,
                                     response.body.data(), response.body.size());
    log(message, response.status);
  }

  void sendLater(SoupServerMessage* message, Response response) {
    soup_server_message_pause(message);
    auto* wait = new Wait{this, Owned<SoupServerMessage>(SOUP_SERVER_MESSAGE(g_object_ref(message))), nullptr,
                          std::move(response)};
    mWaits.insert(wait);
    wait->timer =
        g_timeout_add(static_cast<guint>(wait->response.delay.count() * 1000), &Impl::onDelayOver, wait);
    wait->disconnected = g_signal_connect(message, "disconnected", G_CALLBACK(&Impl::onDisconnected), wait);
  }

  // The connection is taken out of libsoup's hands, so that nothing is ever written to it.
  void stayMute(SoupServerMessage* message, Response response) {
    log(message, 0);
    GSocket* socket = soup_server_message_get_socket(message);
    auto* wait = new Wait{this, nullptr, nullptr, std::move(response)};
    wait->hangUp = socket == nullptr ? nullptr : g_socket_create_source(socket, G_IO_IN, nullptr);
    wait->stream.reset(soup_server_message_steal_connection(message));
    mWaits.insert(wait);
    wait->timer =
        g_timeout_add(static_cast<guint>(wait->response.delay.count() * 1000), &Impl::onSilenceOver, wait);
    if (wait->hangUp != nullptr) {
      g_source_set_callback(wait->hangUp, G_SOURCE_FUNC(&Impl::onSilentInput), wait, nullptr);
      g_source_attach(wait->hangUp, nullptr);
    }
  }

  static gboolean onDelayOver(gpointer data) {
    auto* wait = static_cast<Wait*>(data);
    wait->timer = 0;
    Impl* self = wait->owner;
    const Owned<SoupServerMessage> message(SOUP_SERVER_MESSAGE(g_object_ref(wait->message.get())));
    const Response response = std::move(wait->response);
    self->endWait(wait);
    self->send(message.get(), response);
    soup_server_message_unpause(message.get());
    return G_SOURCE_REMOVE;
  }

  static void onDisconnected(SoupServerMessage*, gpointer data) {
    auto* wait = static_cast<Wait*>(data);
    wait->owner->endWait(wait);
  }

  static gboolean onSilenceOver(gpointer data) {
    auto* wait = static_cast<Wait*>(data);
    wait->timer = 0;
    wait->owner->endWait(wait);
    return G_SOURCE_REMOVE;
  }

  // Whatever a client still says on a silent connection is passed over; its end frees the connection.
  static gboolean onSilentInput(GSocket* socket, GIOCondition, gpointer data) {
    char bytes[4096];
    const gssize count = g_socket_receive_with_blocking(socket, bytes, sizeof bytes, FALSE, nullptr, nullptr);
    if (count > 0) return G_SOURCE_CONTINUE;
    auto* wait = static_cast<Wait*>(data);
    wait->owner->endWait(wait);
    return G_SOURCE_REMOVE;
  }

  void endWait(Wait* wait) {
    mWaits.erase(wait);
    if (wait->timer != 0) g_source_remove(wait->timer);
    if (wait->hangUp != nullptr) {
      g_source_destroy(wait->hangUp);
      g_source_unref(wait->hangUp);
    }
    if (wait->disconnected != 0) g_signal_handler_disconnect(wait->message.get(), wait->disconnected);
    if (wait->stream) g_io_stream_close(wait->stream.get(), nullptr, nullptr);
    delete wait;
  }

  // What never came as far as the handler is told here: libsoup could not read it, or its sender left.
  static void onFinished(SoupServer*, SoupServerMessage* message, gpointer data) {
    static_cast<Impl*>(data)->log(message, static_cast<int>(soup_server_message_get_status(message)));
  }

  static void onAborted(SoupServer*, SoupServerMessage* message, gpointer data) {
    static_cast<Impl*>(data)->log(message, 0);
  }

  void log(SoupServerMessage* message, int status) {
    Exchange& exchange = exchangeOf(message);
    if (exchange.logged) return;
    exchange.logged = true;
    SoupMessageHeaders* headers = soup_server_message_get_request_headers(message);
    GUri* uri = soup_server_message_get_uri(message);
    const std::string time = timeNow();
    const std::string method = textOf(soup_server_message_get_method(message));
    std::string target = uri == nullptr ? "" : textOf(g_uri_get_path(uri));
    if (uri != nullptr && g_uri_get_query(uri) != nullptr) target += "?" + textOf(g_uri_get_query(uri));
    const std::string scan = textOf(soup_message_headers_get_list(headers, "Glimmerpad-Scan"));
    const std::string agent = textOf(soup_message_headers_get_one(headers, "User-Agent"));
    mCallbacks.log(accessLine({time, method, target, status, scan, agent}));
  }

  Callbacks mCallbacks;
  Owned<SoupServer> mServer;
  std::set<Wait*> mWaits;
};

Server::Server(Callbacks callbacks) : mImpl(std::make_unique<Impl>(std::move(callbacks))) {}

Server::~Server() = default;

std::optional<std::string> Server::listen(const std::string& address, int port) {
  const Owned<GSocketAddress> socketAddress(
      g_inet_socket_address_new_from_string(address.c_str(), static_cast<guint>(port)));
  const std::string place = hostForUrl(address) + ":" + std::to_string(port);
  if (!socketAddress) return "'" + address + "' is no address to listen on";
  GError* error = nullptr;
  if (soup_server_listen(mImpl->server(), socketAddress.get(), SoupServerListenOptions(0), &error)) {
    return std::nullopt;
  }
  const bool inUse = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_ADDRESS_IN_USE);
  const std::string reason = inUse ? "the port is in use by another program" : textOf(error->message);
  g_error_free(error);
  return "cannot listen on " + place + ": " + reason;
}

int Server::port() const {
  GSList* uris = soup_server_get_uris(mImpl->server());
  const int port = uris == nullptr ? 0 : g_uri_get_port(static_cast<GUri*>(uris->data));
  g_slist_free_full(uris, reinterpret_cast<GDestroyNotify>(&g_uri_unref));
  return port;
}

}  // namespace juniva
