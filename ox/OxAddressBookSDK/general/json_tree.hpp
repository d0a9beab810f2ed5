#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace ox {

struct JsonMember;

// One JSON value as it stands in the text: members in their order, repeated names kept. Files of
// the neutral book hold no booleans, so there are none.
struct JsonNode {
  using Elements = std::vector<JsonNode>;
  using Members = std::vector<JsonMember>;

  std::variant<std::monostate, std::int64_t, double, std::string, Elements, Members> value;

  // The held value when it is of that kind, else null.
  template <typename T>
  T* as() {
    return std::get_if<T>(&value);
  }
};

struct JsonMember {
  std::string name;
  JsonNode node;
};

// Reads one JSON text (RFC 8259). Missing when it is none, when arrays and objects lie in one
// another deeper than `maxDepth`, and when it holds a boolean or an integer beyond 64 bits.
std::optional<JsonNode> parseJson(std::string_view text, std::size_t maxDepth);

}  // namespace ox
