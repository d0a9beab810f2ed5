#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/values/store_moment.hpp"
#include "ox/records/search_query.hpp"

namespace ox {

// What stands in an index is not what was written.
class DamagedIndex : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The texts that the persons of a store are found by, each with the row of its record, and of every
// 4,096 rows in a row which of them may hold which grams. A file beside the store that can be made
// anew from it at any time. Used by one thread at a time; throws sqlite::Error and DamagedIndex.
class SearchIndex {
 public:
  static constexpr int kBusyMilliseconds = 10'000;

  // Makes the file where it is missing. One that is no index is thrown as DamagedIndex.
  explicit SearchIndex(const std::string& path, int busyMilliseconds = kBusyMilliseconds);
  // In memory alone.
  SearchIndex();

  // Up to where it tells of which store.
  struct Reach {
    std::string store;
    StoreMoment moment;

    bool operator==(const Reach&) const = default;
  };
  // Missing in a new one, and in one whose texts were made otherwise than they are now.
  std::optional<Reach> reach();

  // Rows that match, rising; missing where it does not reach to that moment of that store alone.
  std::optional<std::vector<std::int64_t>> find(const SearchQuery& query, const Reach& reach);

  // While it lives nobody else writes; nothing is changed unless it is committed. Rows are best put
  // in their order.
  class Update {
   public:
    explicit Update(SearchIndex& index) : index_(index), transaction_(index.file_) {}

    void clear();
    // An empty text takes the person away. Rows begin with 1.
    void put(std::int64_t row, std::string_view text);
    void commit(const Reach& reach);

   private:
    struct Rows {
      std::string bits;  // empty: not read yet
      bool isChanged = false;
    };

    void enterBlock(std::int64_t block);
    void writeBlock();
    void note(std::size_t gram, std::size_t place);

    SearchIndex& index_;
    sqlite::Transaction transaction_;
    sqlite::Statement put_;
    std::int64_t block_ = -1;
    std::string grams_;  // those that the block has at all
    std::array<Rows, kSearchGrams> rows_;
  };

 private:
  void prepare(int busyMilliseconds);
  bool isMatch(std::int64_t row, const SearchQuery& query);

  sqlite::Connection file_;
  sqlite::Statement grams_;
  sqlite::Statement person_;
};

}  // namespace ox
