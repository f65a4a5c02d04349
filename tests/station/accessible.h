#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "station/screen.h"

namespace station {

class AccessibilityBus;

// A control of a program as assistive technology sees it, at the moment of each question. What is hidden is
// in nobody's children; one that has gone has no name, no state and no children. For one thread.
class Accessible {
 public:
  Accessible(std::shared_ptr<AccessibilityBus> bus, std::string owner, std::string path,
             bool parentsSensitive = true)
      : bus_(std::move(bus)),
        owner_(std::move(owner)),
        path_(std::move(path)),
        parentsSensitive_(parentsSensitive) {}

  std::string name() const;
  // As the toolkit names it: "button", "text box", "dialog".
  std::string role() const;
  // Whether it would answer to a person: it is sensitive, and what it stands in was when it was found.
  bool isSensitive() const;
  bool isFocused() const;
  // Of a switch.
  bool isChecked() const;
  // The text of a field.
  std::string text() const;
  // Within its window.
  Area extents() const;
  std::vector<Accessible> children() const;
  // Itself and all below it, from the top.
  void walk(const std::function<void(const Accessible&, int depth)>& visit, int depth = 0) const;
  // The first one from the top, itself included; what other processes show within it comes after its own.
  std::optional<Accessible> find(const std::string& role, const std::string& name) const;
  // Does what a click would. False when it has nothing to press.
  bool press() const;
  // Writes a text into a field in place of what stands there. False when it takes none.
  bool write(const std::string& text) const;

 private:
  bool has(int state) const;
  // Leaves out what other processes show, and adds where that begins to the list.
  std::optional<Accessible> findOwn(const std::string& role, const std::string& name,
                                    std::vector<Accessible>& ofOthers) const;

  std::shared_ptr<AccessibilityBus> bus_;
  std::string owner_;
  std::string path_;
  bool parentsSensitive_;
};

// The program with that process on the accessibility bus of a session bus; absent while it is not there.
std::optional<Accessible> accessibleProgram(const std::string& sessionBus, pid_t process);

// The tree in lines, for people who look into a failure.
std::string description(const Accessible& accessible);

}  // namespace station
