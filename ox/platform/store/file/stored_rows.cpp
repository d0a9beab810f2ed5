#include "ox/platform/store/file/stored_rows.hpp"

#include "ox/records/property_codec.hpp"

namespace ox {

StoredRows::StoredRows(StoreFile& file)
    : file_(file),
      record_(file.connection().prepare(
          "SELECT id, uid, kind, container FROM record WHERE id >= ?1 AND id < ?2 ORDER BY id "
          "LIMIT ?3")),
      content_(file.connection().prepare("SELECT c.properties, i.checksum FROM content c "
                                         "LEFT JOIN image i ON i.id = c.image "
                                         "WHERE c.record = ?1")),
      picture_(file.connection().prepare("SELECT checksum FROM image WHERE id = ?1")),
      link_(file.connection().prepare("SELECT id FROM link WHERE parent = ?1 AND child = ?2")) {}

std::optional<RecordEntry> StoredRows::record(std::int64_t row) {
  const auto found = records(row, row + 1);
  return found.empty() ? std::nullopt : std::optional(found.front());
}

std::vector<RecordEntry> StoredRows::records(std::int64_t from, std::int64_t end,
                                             std::int64_t atMost) {
  std::vector<RecordEntry> entries;
  const sqlite::StatementScope scope(record_);
  record_.bind(1, from).bind(2, end).bind(3, atMost);
  while (record_.step()) entries.push_back(entryOfRow(record_));
  return entries;
}

std::optional<StoredRows::Content> StoredRows::content(std::int64_t row) {
  const sqlite::StatementScope scope(content_);
  content_.bind(1, row);
  if (!content_.step()) return std::nullopt;
  return Content{decodeProperties(content_.blob(0)),
                 static_cast<std::uint64_t>(content_.integer(1))};
}

std::optional<std::uint64_t> StoredRows::picture(std::int64_t imageRow) {
  const sqlite::StatementScope scope(picture_);
  picture_.bind(1, imageRow);
  return picture_.step() ? std::optional(static_cast<std::uint64_t>(picture_.integer(0)))
                         : std::nullopt;
}

Data pictureInRow(StoreFile& file, std::int64_t imageRow) {
  auto row = file.connection().prepare("SELECT data FROM image WHERE id = ?1");
  row.bind(1, imageRow);
  return row.step() ? makeData(std::string(row.blob(0))) : nullptr;
}

Data pictureOfRecord(StoreFile& file, std::int64_t row) {
  auto found = file.connection().prepare(
      "SELECT i.data FROM content c JOIN image i ON i.id = c.image WHERE c.record = ?1");
  found.bind(1, row);
  return found.step() ? makeData(std::string(found.blob(0))) : nullptr;
}

void StoredRows::visit(const std::function<void(const RecordEntry&)>& visit) {
  auto rows = file_.connection().prepare("SELECT id, uid, kind, container FROM record ORDER BY id");
  while (rows.step()) visit(entryOfRow(rows));
}

void StoredRows::visitLinks(
    const std::function<void(std::int64_t, std::int64_t, std::int64_t)>& visit) {
  auto rows = file_.connection().prepare("SELECT id, parent, child FROM link ORDER BY id");
  while (rows.step()) visit(rows.integer(0), rows.integer(1), rows.integer(2));
}

std::optional<std::int64_t> StoredRows::link(std::int64_t group, std::int64_t child) {
  const sqlite::StatementScope scope(link_);
  link_.bind(1, group).bind(2, child);
  return link_.step() ? std::optional(link_.integer(0)) : std::nullopt;
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
  auto& rows = file_.statement(Sql::RecordsOfContainer);
  const sqlite::StatementScope scope(rows);
  rows.bind(1, container);
  std::vector<RecordEntry> entries;
  while (rows.step()) entries.push_back(entryOfRow(rows));
  return entries;
}

}  // namespace ox
