#pragma once

#include <optional>
#include <string>

#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output_file.hpp"

namespace ox::program {

// The file that --report names, opened before the work so that it can be written afterwards;
// missing where none is named. Throws a CommandError for the standard output.
std::optional<OutputFile> reportFileAt(const std::string& path);
// False, and the user told why, when it could not be written.
bool writeReport(OutputFile& file, const Json& json);

}  // namespace ox::program
