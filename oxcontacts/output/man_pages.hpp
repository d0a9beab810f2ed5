#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace ox::program {

// Writes oxcontacts.1 and an oxcontacts-COMMAND.1 for each command into that folder, which is made
// where it is missing, in the mdoc language. They bear the day of $SOURCE_DATE_EPOCH, else today's.
// Throws a CommandError or std::system_error when a page cannot be written.
void writeManPages(const CLI::App& program, const std::string& folder);

}  // namespace ox::program
