#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "ox/OxAddressBookSDK/general/book_format.hpp"
#include "ox/OxAddressBookSDK/general/json_tree.hpp"
#include "ox/base/text.hpp"

namespace ox::book_format {

// The node's held T. Throws Unreadable when it holds something else.
template <typename T>
T& heldAs(JsonNode& node) {
  if (auto* held = node.as<T>()) return *held;
  throw Unreadable("a value of the wrong kind");
}

// Reads the members of an object by name, each once. Throws Unreadable for what is not as it should
// be: call done() at the end, which finds every member that nobody asked for, repeated ones too.
class JsonFields {
 public:
  explicit JsonFields(JsonNode& node) : members_(heldAs<JsonNode::Members>(node)) {}

  // Null when there is no such member.
  JsonNode* find(std::string_view name) {
    for (auto& [itsName, node] : members_) {
      if (itsName != name) continue;
      ++read_;
      return &node;
    }
    return nullptr;
  }

  JsonNode& get(std::string_view name) {
    if (auto* node = find(name)) return *node;
    throw Unreadable("a member is missing");
  }

  template <typename T>
  T& get(std::string_view name) {
    return heldAs<T>(get(name));
  }

  // Missing when there is no such member.
  Text findText(std::string_view name) {
    auto* node = find(name);
    return node == nullptr ? std::nullopt : Text(std::move(heldAs<std::string>(*node)));
  }

  template <typename Number>
  Number getNumber(std::string_view name) {
    const auto number = get<std::int64_t>(name);
    if (!std::in_range<Number>(number)) throw Unreadable("a number out of range");
    return static_cast<Number>(number);
  }

  void done() const {
    if (read_ != members_.size()) throw Unreadable("a member that is unknown or repeated");
  }

 private:
  JsonNode::Members& members_;
  std::size_t read_ = 0;
};

}  // namespace ox::book_format
