#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ox/base/uuid.hpp"
#include "ox/platform/store/file/store_file.hpp"
#include "ox/platform/store/values/journal_row.hpp"
#include "ox/records/link_list.hpp"

namespace ox {

// The links that one step of an act makes or takes away, by their groups: each group is one row of
// the journal.
class LinksOfGroups {
 public:
  struct Group {
    std::int64_t row = 0;
    std::int32_t container = 0;
    NumberedLinks links;
  };

  void add(std::int64_t group, std::int32_t container, const NumberedLink& link);
  // Puts the links of each group into the order in which they were added to it.
  void sortByNumber();
  // In the order in which they came.
  const std::vector<Group>& groups() const { return groups_; }

 private:
  std::vector<Group> groups_;
  std::unordered_map<std::int64_t, std::size_t> places_;
  std::size_t last_ = 0;  // the place of the group that was added to last
};

// Writes what one act leaves in the journal: its changes, in the order in which they are given, and
// its own row. Borrows the file. Throws sqlite::Error.
class JournalWriter {
 public:
  // Behind that act.
  JournalWriter(StoreFile& file, const ActRow& last);
  JournalWriter(const JournalWriter&) = delete;
  JournalWriter& operator=(const JournalWriter&) = delete;

  // ChangeKind tells what each holds; what is missing is NULL.
  struct Change {
    ChangeKind what;
    std::optional<std::int64_t> record = std::nullopt;
    std::optional<std::int64_t> container = std::nullopt;
    std::optional<std::int64_t> other = std::nullopt;
    std::optional<std::int64_t> place = std::nullopt;
    std::optional<std::string_view> before = std::nullopt;
    std::optional<std::string_view> after = std::nullopt;
    const StoredUid* uid = nullptr;  // instead of after
    std::int64_t pictureBytes = 0;   // of the picture that the row owns from now on
  };
  void write(const Change& change);
  // Linked or Unlinked.
  void write(ChangeKind what, const LinksOfGroups& links);
  // The act's own row, which tells where its additions and links end; the result is what it tells.
  ActRow writeAct(const Uuid& name, std::int64_t origin, std::int64_t nextRecord,
                  std::int64_t nextLink);

 private:
  StoreFile& file_;
  std::int64_t number_;
  std::int64_t nextChange_;
  std::int64_t bytes_;
};

}  // namespace ox
