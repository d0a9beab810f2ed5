#include "ox/OxAddressBookSDK/tags/tag_table.hpp"

#include <filesystem>

#include "ox/OxAddressBookSDK/tags/tag_schema.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "ox/base/sqlite/error.hpp"

namespace ox {
AllTags allTagsIn(const std::string& path) {
  AllTags all;
  if (!std::filesystem::exists(path)) return all;
  auto file = openTagFileAsItIs(path);
  // Since version 3 a row tells whether it is what was written.
  const bool isUnsummed = file.queryInteger("PRAGMA user_version") < 3;
  const std::string sound(isUnsummed ? "1" : kIsSoundTag);
  auto rows = file.prepare("SELECT manager, person, tag, " + sound +
                           " FROM tag ORDER BY manager, person, position");
  while (rows.step()) {
    if (rows.integer(3) == 0) {
      throw FailureError(FailureKind::Corrupt, path + ": a row of the tag file is damaged", path);
    }
    all[{std::string(rows.text(0)), std::string(rows.text(1))}].emplace_back(rows.text(2));
  }
  return all;
}

bool eraseTagsIn(const std::string& path, const std::string& person) {
  if (!std::filesystem::exists(path)) return false;
  auto file = openTagFileAsItIs(path);
  file.execute("PRAGMA secure_delete=ON; PRAGMA synchronous=FULL");
  file.prepare("DELETE FROM tag WHERE person = ?1").bindText(1, person).run();
  const bool found = file.changes() > 0;
  // What was deleted earlier may still stand in parts of pages that nobody uses.
  file.execute("VACUUM");
  if (file.queryInteger("PRAGMA wal_checkpoint(TRUNCATE)") == 0) return found;
  throw FailureError(
      FailureKind::Busy,
      path + ": another program is using the tags; until it ends traces stay in " + path + "-wal",
      path);
}

}  // namespace ox
