#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ox/base/record_key.hpp"
#include "ox/base/sqlite/page_rows.hpp"
#include "ox/platform/store/values/container_info.hpp"
#include "ox/platform/store/values/record_entry.hpp"
#include "ox/records/property_bag.hpp"

namespace ox {

// The rows of a store that can be read from its pages, by their numbers, whatever has become of the
// trees that led to them. A row is known by its form and by what is checked of it. Of several with
// one number the one that can be trusted most counts: on a page that others lead to, on any page
// that lists it, or on a damaged page, where an older state of it may stand.
class FoundRows {
 public:
  // Reads all pages of the file, which it borrows.
  explicit FoundRows(sqlite::PageFile& file);

  struct Content {
    PropertyBag properties;
    std::int64_t picture = 0;  // its row; 0: none
  };
  struct Link {
    std::int64_t group = 0;
    std::int64_t child = 0;
  };

  std::map<std::int64_t, ContainerInfo> containers() const;
  // Of all records of which anything was found; the key of an entry is none, and the container 0,
  // where only its values were.
  std::vector<RecordEntry> records() const;
  // Those of which only the identifier was found.
  std::vector<RecordKey> lostRecords() const;
  std::vector<Link> links() const;
  // Missing where they cannot be read.
  std::optional<Content> content(std::int64_t row);
  std::optional<std::string> picture(std::int64_t row);
  // Whether accounts were in step with a book elsewhere; what is kept of that is not looked at.
  bool hasSync() const { return hasSync_; }
  // How many rows may be of an older state.
  std::uint64_t doubtful() const;

 private:
  enum class Trust : std::uint8_t { Least, Listed, Most };
  template <typename Value>
  struct Found {
    Value value;
    Trust trust = Trust::Least;
  };
  template <typename Value>
  using Table = std::unordered_map<std::int64_t, Found<Value>>;

  void readListed();
  void readDamaged();
  void take(Trust trust, const sqlite::RowPlace& place, const sqlite::PageRow& row);
  void takeIndexed(const sqlite::PageRow& row);
  bool takeChange(const sqlite::PageRow& row);
  template <typename Value>
  void keep(Table<Value>& table, std::int64_t number, Value value, Trust trust);
  bool isGone(std::int64_t row, Trust trust) const;

  sqlite::PageFile& file_;
  sqlite::PageRows rows_;
  std::vector<std::uint32_t> damagedPages_;
  Table<ContainerInfo> containers_;
  Table<RecordEntry> records_;
  Table<sqlite::RowPlace> contents_;
  Table<sqlite::RowPlace> pictures_;
  Table<Link> links_;
  bool hasSync_ = false;
  std::unordered_map<std::int64_t, RecordKey> indexed_;     // identifiers, by the row of the record
  std::unordered_map<std::int64_t, std::int64_t> removed_;  // rows of records, by the last change
};

}  // namespace ox
