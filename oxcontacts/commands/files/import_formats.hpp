#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "ox/transfer/file_format.hpp"
#include "oxcontacts/context.hpp"

namespace ox::program {

// --format of an import.
void declareFormat(CLI::App& command, vcard::FileFormat& format);

// Prints what an import makes of each column of those files that are tables.
void printColumns(const Context& context, const std::vector<std::string>& files,
                  vcard::FileFormat format);

}  // namespace ox::program
