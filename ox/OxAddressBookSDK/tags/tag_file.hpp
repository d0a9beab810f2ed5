#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ox/base/sqlite/connection.hpp"

namespace ox {

// One open tag file and every statement over it. One thread at a time; throws sqlite::Error.
class TagFile {
 public:
  using Tags = std::vector<std::string>;

  // Opens the file, which must exist, and fills it when it is empty. Throws, and changes nothing,
  // when it is not a tag file that this version can read.
  explicit TagFile(const std::string& path);

  Tags tags(std::string_view manager, std::string_view person);
  void add(std::string_view manager, std::string_view person, std::string_view tag);
  void remove(std::string_view manager, std::string_view person, std::string_view tag);
  // The tags must hold none twice.
  void replace(std::string_view manager, std::string_view person, const Tags& tags);

  // One line for each problem that the file has.
  Tags problems();
  // Commits once more, synced to the disk, and so syncs every commit before it.
  void sync();

 private:
  explicit TagFile(sqlite::Connection connection);

  sqlite::Connection connection_;
  sqlite::Statement select_;
  sqlite::Statement insert_;
  sqlite::Statement deleteOne_;
  sqlite::Statement deleteAll_;
};

// Whether the file at that path is a tag file by its first bytes, of whatever version. It is opened
// without the database, so it must not be one that this process has open.
bool isTagFile(const std::string& path);

}  // namespace ox
