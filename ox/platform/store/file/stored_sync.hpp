#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ox/platform/store/file/store_file.hpp"
#include "ox/platform/store/values/sync_rows.hpp"

namespace ox {

// How a list stands in one column: each text with a line end behind it.
std::string textOfLines(const std::vector<std::string>& lines);
std::vector<std::string> linesOf(std::string_view text);

// What stands in the rows of one store file of accounts that are in step with others; SyncSource
// tells what each answers. Borrows the file. Throws sqlite::Error and DamagedRow.
class StoredSync {
 public:
  explicit StoredSync(StoreFile& file) : file_(file) {}

  // A container by its row and its identifier.
  struct Container {
    std::int32_t row = 0;
    std::string identifier;
  };

  std::vector<SyncLogin> logins();
  std::vector<SyncBook> books();
  enum class Which : std::uint8_t { All, OfGroups, Changed, Tagged, Refused };
  std::vector<SyncCardNow> cards(const Container& container, Which which);
  std::vector<SyncCardNow> cardsAt(const Container& container, std::span<const std::string> paths);
  std::size_t countCards(std::int32_t container);
  std::size_t countAgreedCards(std::int32_t container);
  std::vector<RecordWithoutCard> recordsWithoutCard(std::int32_t container);
  std::vector<SyncCard::Texts> texts(std::span<const std::int64_t> ids);
  std::vector<SyncConflict> conflicts();
  std::vector<SyncRun> runs(const Container& container, std::size_t atMost);

 private:
  sqlite::Statement prepare(std::string_view sql) { return file_.connection().prepare(sql); }

  StoreFile& file_;
};

}  // namespace ox
