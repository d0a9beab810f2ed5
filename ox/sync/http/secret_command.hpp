#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "ox/sync/login_settings.hpp"

namespace ox::sync {

// Runs a command in the user's shell and puts what it prints into the buffer; what does not fit is
// read and forgotten. Its standard input is empty: a program that asks the user opens the terminal
// itself. Answers how many bytes there are. Throws RemoteError: Login where it ends with anything
// but 0, Stopped.
std::size_t outputOfCommand(const std::string& command, const WireHooks& hooks,
                            std::span<char> buffer);

// What may be shown of it: its first word at most.
std::string shownCommand(const std::string& command);

}  // namespace ox::sync
