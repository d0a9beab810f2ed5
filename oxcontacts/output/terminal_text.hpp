#pragma once

#include <string>
#include <string_view>

namespace ox::program {

// The text as it may go to a terminal: a line feed becomes a blank, any other control character and
// every direction override U+FFFD, so that no contact can steer the terminal.
std::string terminalText(std::string_view text);

}  // namespace ox::program
