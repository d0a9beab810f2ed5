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
// this library have made it. Where its file cannot be written, or what is read of the store is an
// earlier moment or in part damaged, an index in memory does the same; of the damage whoever
// searches is told. Borrows the file. Used by one thread at a time; throws StoreError.
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
  enum class Damage : std::uint8_t { Refuse, PassOver };
  enum class Followed : std::uint8_t { Before, Now, IsFurther, IsOfDamage };

  // Missing where the file does not do.
  std::optional<std::vector<std::int64_t>> rowsByFile(const SearchQuery& query);
  std::vector<std::int64_t> rowsInMemory(const SearchQuery& query);
  // Of what is read of the store; as if of no act where the journal has lost its last one.
  SearchIndex::Reach reachOfStore();
  Followed follow(SearchIndex& index, const SearchIndex::Reach& store, Damage damage);
  // False where the journal does not tell what has changed since.
  bool takeChanges(const ActRow& since, SearchIndex::Update& update);
  void takeRows(std::int64_t from, SearchIndex::Update& update);
  std::string textOfRow(std::int64_t row);
  std::string textOf(const sqlite::Statement& row, int properties, int sound);
  std::optional<ActRow> actNumbered(std::int64_t number);

  StoreFile& file_;
  std::size_t damaged_ = 0;  // rows that could not be read while an index was followed
  std::size_t damagedInMemory_ = 0;
  std::optional<SearchIndex> inFile_;
  std::optional<SearchIndex> inMemory_;
};

// An index that the journal cannot bring up to date any more holds what has left the journal: its
// file goes. Waits for nobody: whoever is just using it brings it up to date.
void removeOutdatedIndex(StoreFile& file);
// Whatever it holds.
void removeIndex(const StoreAddress& store);

}  // namespace ox
