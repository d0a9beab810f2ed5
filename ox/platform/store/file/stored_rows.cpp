#include "ox/platform/store/file/stored_rows.hpp"

#include <limits>

#include "ox/base/checksum.hpp"
#include "ox/records/property_codec.hpp"

namespace ox {
namespace {

std::optional<std::int64_t> firstNumber(sqlite::Statement& row) {
  const sqlite::StatementScope scope(row);
  return row.step() ? std::optional(row.integer(0)) : std::nullopt;
}

std::vector<RecordEntry> entriesOf(sqlite::Statement& rows) {
  std::vector<RecordEntry> entries;
  const sqlite::StatementScope scope(rows);
  while (rows.step()) entries.push_back(entryOfRow(rows));
  return entries;
}

// Of a row of checksum, data.
Data soundPicture(const sqlite::Statement& row) {
  const auto bytes = row.blob(1);
  if (checksum64(bytes) != static_cast<std::uint64_t>(row.integer(0))) {
    throw DamagedRow("a stored picture is damaged: its checksum differs");
  }
  return makeData(std::string(bytes));
}

}  // namespace

std::optional<RecordEntry> StoredRows::record(std::int64_t row) {
  const auto found = records(row, row + 1);
  return found.empty() ? std::nullopt : std::optional(found.front());
}

std::vector<RecordEntry> StoredRows::records(std::int64_t from, std::int64_t end,
                                             std::int64_t atMost) {
  auto& rows = file_.statement(Sql::RecordsOfRows);
  return entriesOf(rows.bind(1, from).bind(2, end).bind(3, atMost));
}

std::optional<StoredRows::Content> StoredRows::content(std::int64_t row) {
  auto& content = file_.statement(Sql::ContentOfRow);
  const sqlite::StatementScope scope(content);
  content.bind(1, row);
  if (!content.step()) return std::nullopt;
  if (content.integer(2) == 0) throw DamagedProperties("the row of the stored values is damaged");
  return Content{decodeProperties(content.blob(0)), static_cast<std::uint64_t>(content.integer(1))};
}

std::vector<std::optional<std::uint64_t>> StoredRows::fingerprints(
    const std::vector<std::int64_t>& rows) {
  std::vector<std::optional<std::uint64_t>> fingerprints(rows.size());
  sqlite::KeyList asked;
  asked.reserve(rows.size());
  for (const auto row : rows) asked.add(row);
  auto& found = file_.statement(Sql::FingerprintsOfRows);
  const sqlite::StatementScope scope(found);
  found.bindKeys(1, asked);
  while (found.step()) {
    requireSound(found, 2, "a row of stored values");
    fingerprints[static_cast<std::size_t>(found.integer(0))] =
        static_cast<std::uint64_t>(found.integer(1));
  }
  return fingerprints;
}

std::optional<std::uint64_t> StoredRows::picture(std::int64_t imageRow) {
  const auto checksum = firstNumber(file_.statement(Sql::ImageChecksum).bind(1, imageRow));
  return checksum ? std::optional(static_cast<std::uint64_t>(*checksum)) : std::nullopt;
}

std::vector<ContainerRow> containersOf(StoreFile& file) {
  std::vector<ContainerRow> containers;
  auto& rows = file.statement(Sql::Containers);
  const sqlite::StatementScope scope(rows);
  while (rows.step()) {
    containers.push_back({rows.integer(0),
                          {std::string(rows.text(1)), std::string(rows.text(2)),
                           static_cast<std::int32_t>(rows.integer(3))},
                          rows.integer(4) != 0 && isContainerRow(rows.integer(0))});
  }
  return containers;
}

std::string nameOfStore(StoreFile& file) {
  auto& name = file.statement(Sql::StoreName);
  const sqlite::StatementScope scope(name);
  if (!name.step()) return {};
  requireSound(name, 1, "the name of the store");
  return std::string(name.blob(0));
}

Data pictureInRow(StoreFile& file, std::int64_t imageRow) {
  auto row = file.connection().prepare("SELECT checksum, data FROM image WHERE id = ?1");
  row.bind(1, imageRow);
  return row.step() ? soundPicture(row) : nullptr;
}

Data pictureOfRecord(StoreFile& file, std::int64_t row) {
  auto found = file.connection().prepare(
      "SELECT i.checksum, i.data, c.sound FROM content c JOIN image i ON i.id = c.image "
      "WHERE c.record = ?1");
  found.bind(1, row);
  if (!found.step()) return nullptr;
  requireSound(found, 2, "the row that leads to a picture");
  return soundPicture(found);
}

void StoredRows::visit(const std::function<void(const RecordEntry&)>& visit) {
  auto rows = file_.connection().prepare(sqlOf(Sql::RecordsAfter));
  rows.bind(1, std::numeric_limits<std::int64_t>::min());
  while (rows.step()) visit(entryOfRow(rows));
}

void StoredRows::visitLinks(
    const std::function<void(std::int64_t, std::int64_t, std::int64_t)>& visit) {
  auto rows = file_.connection().prepare("SELECT id, parent, child, sound FROM link ORDER BY id");
  while (rows.step()) {
    requireSound(rows, 3, "the row of a link");
    visit(rows.integer(0), rows.integer(1), rows.integer(2));
  }
}

std::optional<std::int64_t> StoredRows::link(std::int64_t group, std::int64_t child) {
  return firstNumber(file_.statement(Sql::LinkNumber).bind(1, group).bind(2, child));
}

std::vector<std::int64_t> StoredRows::parents(std::int64_t row) {
  auto& rows = file_.statement(Sql::ParentRows);
  const sqlite::StatementScope scope(rows);
  rows.bind(1, row);
  std::vector<std::int64_t> found;
  while (rows.step()) found.push_back(rows.integer(0));
  return found;
}

std::vector<RecordEntry> StoredRows::recordsIn(std::int32_t container) {
  return entriesOf(file_.statement(Sql::RecordsOfContainer).bind(1, container));
}

}  // namespace ox
