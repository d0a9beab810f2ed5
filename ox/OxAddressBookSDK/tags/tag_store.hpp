#pragma once

#include <memory>
#include <mutex>
#include <string_view>

#include "ox/OxAddressBookSDK/tags/tag_file.hpp"

namespace ox {

// The tag file as this process shares it: opened when first needed, made when the first tag is
// written. Throws sqlite::Error or std::system_error when the file cannot be used; the next call
// tries again. Safe from any thread.
class TagStore {
 public:
  using Tags = TagFile::Tags;

  static TagStore& shared();

  Tags tags(std::string_view manager, std::string_view person);
  void add(std::string_view manager, std::string_view person, std::string_view tag);
  void remove(std::string_view manager, std::string_view person, std::string_view tag);
  // The tags must hold none twice.
  void replace(std::string_view manager, std::string_view person, const Tags& tags);

  // One line for each problem that the file has; empty when there is no file.
  Tags problems();
  // Syncs what this process has committed; does nothing when that is synced already.
  void makeDurable();

 private:
  // The open file; null when there is none.
  TagFile* existing();
  // The open file, made when there was none.
  TagFile& existingOrNew();

  std::mutex mutex_;
  std::unique_ptr<TagFile> file_;
  bool unsynced_ = false;
};

}  // namespace ox
