#include "oxcontacts/output/report_file.hpp"

#include "oxcontacts/context.hpp"

namespace ox::program {

std::optional<OutputFile> reportFileAt(const std::string& path) {
  if (path.empty()) return std::nullopt;
  if (OutputFile::isStandardOutput(path)) {
    throw CommandError(kUsage, "the report needs a file of its own; --json prints it");
  }
  return std::optional<OutputFile>(std::in_place, path);
}

bool writeReport(OutputFile& file, const Json& json) {
  try {
    file.write(json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
    file.commit();
    return true;
  } catch (const std::exception& error) {
    Context::complain("the report could not be written: " + std::string(error.what()));
    return false;
  }
}

}  // namespace ox::program
