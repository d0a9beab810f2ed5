#pragma once

#include <string>
#include <string_view>

namespace ox::program {

// Text as it may go to a terminal, which no contact and no argument can steer: controls, what turns
// the direction of text and ill-formed bytes become U+FFFD, a mark that stands on nothing gets a
// dotted circle, and no character bears more than sixteen marks. Whatever the program writes for
// readers goes through one of these.

// In one line: a line break becomes a blank.
std::string terminalText(std::string_view text);
// With the lines that it has.
std::string terminalLines(std::string_view text);
// A JSON text, all that would be replaced escaped, so that it reads the same.
std::string terminalJson(std::string_view json);

}  // namespace ox::program
