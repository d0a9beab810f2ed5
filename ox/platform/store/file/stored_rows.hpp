#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/platform/store/file/store_file.hpp"
#include "ox/platform/store/values/container_info.hpp"
#include "ox/platform/store/values/record_entry.hpp"
#include "ox/records/property_bag.hpp"

namespace ox {

// What stands in the rows of one store file now, by row, without the memory's caches. Borrows the
// file. Throws sqlite::Error and DamagedRow.
class StoredRows {
 public:
  explicit StoredRows(StoreFile& file) : file_(file) {}

  struct Content {
    PropertyBag properties;
    std::uint64_t picture = 0;  // its checksum; 0: none
  };

  std::optional<RecordEntry> record(std::int64_t row);
  // Those of these rows, rising; at most so many, all below 0.
  std::vector<RecordEntry> records(std::int64_t from, std::int64_t end, std::int64_t atMost = -1);
  // Missing when there is none; throws DamagedProperties.
  std::optional<Content> content(std::int64_t row);
  // The fingerprint of what stands in each of these rows; missing where there is none.
  std::vector<std::optional<std::uint64_t>> fingerprints(const std::vector<std::int64_t>& rows);
  // The checksum of a picture; missing when that row is not there.
  std::optional<std::uint64_t> picture(std::int64_t imageRow);
  // Every record by its row, every link by its number.
  void visit(const std::function<void(const RecordEntry&)>& visit);
  void visitLinks(const std::function<void(std::int64_t number, std::int64_t group,
                                           std::int64_t child)>& visit);
  // The number of a link.
  std::optional<std::int64_t> link(std::int64_t group, std::int64_t child);
  std::vector<std::int64_t> parents(std::int64_t row);
  std::vector<RecordEntry> recordsIn(std::int32_t container);

 private:
  StoreFile& file_;
};

struct ContainerRow {
  std::int64_t row = 0;  // isContainerRow, if it is sound
  ContainerInfo info;
  bool isSound = true;  // else the row is damaged, and nothing of it to be believed
};
// Every container, the local one first.
std::vector<ContainerRow> containersOf(StoreFile& file);
// The name of the store, which no other has; empty in a damaged one that has lost it.
std::string nameOfStore(StoreFile& file);

// The bytes of the picture in that row; of a record in that row. Null when there is none; throws
// DamagedRow when they are not what was written.
Data pictureInRow(StoreFile& file, std::int64_t imageRow);
Data pictureOfRecord(StoreFile& file, std::int64_t row);

}  // namespace ox
