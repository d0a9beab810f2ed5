#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "ox/platform/store/file/store_file.hpp"
#include "ox/platform/store/values/act.hpp"
#include "ox/platform/store/writing/journal_writer.hpp"

namespace ox {

// Writes the links of one act and tells the journal of them, a statement for many: opening the
// tables anew for each link costs as much as writing it. Borrows the file and the journal. Throws
// sqlite::Error.
class LinkWriter {
 public:
  // New links get numbers from nextLink on.
  LinkWriter(StoreFile& file, JournalWriter& journal, std::int64_t nextLink)
      : file_(file), journal_(journal), nextLink_(nextLink) {}
  LinkWriter(const LinkWriter&) = delete;
  LinkWriter& operator=(const LinkWriter&) = delete;

  using Links = std::span<const Act::ChangedLink>;
  using Visit = std::function<void(const Act::ChangedLink&)>;
  // Each visits those that were removed or added; one that is not there, or is there already, is
  // left alone.
  void remove(Links links, const Visit& visit);
  // Of new records and containers the act knows no rows yet: these tell which they have.
  struct Rows {
    std::function<std::int64_t(std::int64_t)> record;
    std::function<std::int32_t(std::int32_t)> container;
  };
  void add(Links links, const Rows& rows, const Visit& visit);
  // Whether there were any. The links of records that go are told before them; what a damaged row
  // says is not told.
  bool removeLinksOf(const std::vector<RecordEntry>& records);

  std::int64_t nextLink() const { return nextLink_; }

 private:
  using Added = std::vector<std::optional<std::int64_t>>;  // their numbers
  Added insert(Links run, const Rows& rows);
  Added insertBack(const Act::ChangedLink& link, const Rows& rows);
  std::int64_t numberOf(const Act::ChangedLink& link);
  enum class Side : std::uint8_t { Parents, Children };
  bool take(const std::vector<RecordEntry>& records, Side side, LinksOfGroups& taken);
  void deleteLinks(const sqlite::KeyList& numbers);

  StoreFile& file_;
  JournalWriter& journal_;
  std::int64_t nextLink_;
};

}  // namespace ox
