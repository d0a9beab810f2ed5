#include "ox/base/sqlite/index_repair.hpp"

namespace ox::sqlite {

bool hasWholePages(Connection& file) {
  return file.queryText("PRAGMA quick_check(1)") == "ok";
}

std::vector<std::string> mendIndexes(Connection& file, const Schema& missing,
                                     const std::vector<std::string>& tables) {
  std::vector<std::string> mended;
  for (const auto& table : tables) {
    const auto damaged = "SELECT EXISTS(SELECT 1 FROM " + table + " WHERE sound IS NOT 1)";
    if (file.queryInteger(damaged) != 0) return mended;
  }
  for (const auto& index : missing) {
    file.execute(index.words.c_str());
    mended.push_back("made the index " + index.name + " anew, which was missing");
  }
  if (file.queryText("PRAGMA integrity_check(1)") != "ok") {
    file.execute("REINDEX");
    mended.emplace_back("made the indexes anew, of which one did not agree with its table");
  }
  return mended;
}

}  // namespace ox::sqlite
