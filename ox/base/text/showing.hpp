#pragma once

#include <cstdint>
#include <string_view>

#include "ox/base/export.hpp"

namespace ox {

// What a character does where it is shown to a reader.
enum class Showing : std::uint8_t {
  AsItIs,
  LineBreak,  // LF, and the line and paragraph separators
  Steers,     // controls (C0, DEL, C1), what turns the direction of text, ill-formed bytes
  Mark,       // stands on the character before it
};

struct ShownCharacter {
  std::string_view bytes;  // at the front of the text
  char32_t character = 0;  // U+FFFD for ill-formed bytes
  Showing showing = Showing::AsItIs;
};

// The character at the front of a text, which is not empty.
OX_EXPORT ShownCharacter firstShown(std::string_view text);

}  // namespace ox
