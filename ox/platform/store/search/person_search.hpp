#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ox/platform/store/file/journal_rows.hpp"
#include "ox/platform/store/file/store_file.hpp"
#include "ox/platform/store/search/search_index.hpp"

namespace ox {

// Finds committed persons by what is typed, by an index beside the store that follows the journal:
// whoever writes leaves it alone, and whoever searches first brings it up to date. It is made anew
// where the journal does not reach back, where it is damaged, and where other versions of ICU or of
// this library have made it; where its file cannot be written, in memory. Borrows the file. Used by
// one thread at a time; throws sqlite::Error and DamagedRow of the store.
class PersonSearch {
 public:
  explicit PersonSearch(StoreFile& file) : file_(file) {}

  // Rows of records that match, rising; groups are never among them.
  std::vector<std::int64_t> rows(const SearchQuery& query);

  // Closes the index.
  void letGo() {
    inFile_.reset();
    inMemory_.reset();
  }

 private:
  // Missing where the file cannot be used, or reaches further than what is read of the store.
  std::optional<std::vector<std::int64_t>> rowsByFile(const SearchQuery& query);
  std::vector<std::int64_t> rowsInMemory(const SearchQuery& query);
  // Of what is read of the store; as if of no act where the journal has lost its last one.
  SearchIndex::Reach reachOfStore();
  // Brings it up to there; false where it reaches further and what is read is pinned. Otherwise an
  // earlier copy has taken the place of the store.
  bool follow(SearchIndex& index, const SearchIndex::Reach& store);
  // False where the journal does not tell what has changed since.
  bool takeChanges(const ActRow& since, SearchIndex::Update& update);
  void takeRows(std::int64_t from, SearchIndex::Update& update);
  std::string textOfRow(std::int64_t row);

  StoreFile& file_;
  bool isPinned_ = false;  // what is read of the store is of an earlier moment, perhaps
  std::optional<SearchIndex> inFile_;
  std::optional<SearchIndex> inMemory_;
};

// An index that the journal cannot bring up to date any more holds what has left the journal: its
// file goes.
void removeOutdatedIndex(StoreFile& file);
// Whatever it holds.
void removeIndex(const StoreAddress& store);

}  // namespace ox
