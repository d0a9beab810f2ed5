#include "bench/plain_sqlite.hpp"

#include <array>
#include <cstring>
#include <stdexcept>

#include "bench/plain_database.hpp"

namespace ox::bench::plain {
namespace {

constexpr std::size_t kBatch = 5000;

// The three statements that a record takes.
class Writer {
 public:
  explicit Writer(Database& database)
      : record_(database, "INSERT INTO record(id, uid, kind, container) VALUES(?1, ?2, ?3, ?4)"),
        content_(database,
                 "INSERT INTO content(record, card_uid, fingerprint, image, properties) "
                 "VALUES(?1, ?2, ?3, nullif(?4, 0), ?5)"),
        image_(database, "INSERT INTO image(id, checksum, data) VALUES(?1, ?2, ?3)") {}

  void write(const Rows::Record& row) {
    record_.bind(1, row.id);
    record_.bindBlob(2, row.uid);
    record_.bind(3, row.kind);
    record_.bind(4, row.container);
    record_.finish();
    content_.bind(1, row.id);
    content_.bindText(2, row.cardUid);
    content_.bind(3, row.fingerprint);
    content_.bind(4, row.image.empty() ? 0 : row.id);
    content_.bindBlob(5, row.properties);
    content_.finish();
    if (row.image.empty()) return;
    image_.bind(1, row.id);
    image_.bind(2, row.imageChecksum);
    image_.bindBlob(3, row.image);
    image_.finish();
  }

 private:
  Query record_, content_, image_;
};

void makeSchema(Database& database, const Rows& rows) {
  for (const auto& sql : rows.schema) database.run(sql.c_str());
  database.run("INSERT INTO container(identifier, name, type) VALUES('_local:ABAccount', '', 1)");
}

}  // namespace

Rows readRows(const std::string& path) {
  Database database(path);
  Rows rows;
  Query schema(database,
               "SELECT sql FROM sqlite_master WHERE sql IS NOT NULL AND name NOT LIKE 'sqlite_%'");
  while (schema.step()) rows.schema.push_back(schema.bytes(0));
  Query records(database,
                "SELECT r.id, r.uid, r.kind, r.container, c.card_uid, c.fingerprint, c.properties, "
                "i.checksum, i.data FROM record r JOIN content c ON c.record = r.id "
                "LEFT JOIN image i ON i.id = c.image ORDER BY r.id");
  while (records.step()) {
    rows.records.push_back({records.number(0), records.bytes(1), records.number(2),
                            records.number(3), records.bytes(4), records.number(5),
                            records.bytes(6), records.number(7), records.bytes(8)});
  }
  return rows;
}

void writeRows(const Rows& rows, const std::string& path) {
  Database database(path);
  makeSchema(database, rows);
  {
    Writer writer(database);
    for (std::size_t i = 0; i < rows.records.size(); ++i) {
      if (i % kBatch == 0) database.run("BEGIN IMMEDIATE");
      writer.write(rows.records[i]);
      if ((i + 1) % kBatch == 0 || i + 1 == rows.records.size()) database.run("COMMIT");
    }
  }
  database.run("PRAGMA synchronous=FULL; PRAGMA wal_checkpoint(TRUNCATE)");
}

std::size_t findByCardUid(const Rows& rows, const std::string& path) {
  Database database(path);
  Query find(database,
             "SELECT c.properties FROM content c JOIN record r ON r.id = c.record "
             "WHERE c.card_uid = ?1 ORDER BY r.id");
  std::size_t bytes = 0;
  for (const auto& record : rows.records) {
    find.bindText(1, record.cardUid);
    while (find.step()) bytes += find.size(0);
    find.reset();
  }
  return bytes;
}

std::size_t listRecords(const std::string& path) {
  struct Listed {
    std::int64_t id;
    std::array<char, 16> uid;
    std::int32_t kind, container;
  };
  Database database(path);
  Query query(database, "SELECT id, uid, kind, container FROM record");
  std::vector<Listed> list;
  while (query.step()) {
    Listed listed{query.number(0),
                  {},
                  static_cast<std::int32_t>(query.number(2)),
                  static_cast<std::int32_t>(query.number(3))};
    const auto uid = query.bytes(1);
    std::memcpy(listed.uid.data(), uid.data(), std::min(uid.size(), listed.uid.size()));
    list.push_back(listed);
  }
  return list.size();
}

std::size_t readProperties(const std::string& path) {
  Database database(path);
  Query query(database, "SELECT properties FROM content");
  std::size_t bytes = 0;
  while (query.step()) bytes += query.size(0);
  return bytes;
}

std::size_t readOneAgain(const std::string& path, std::size_t times) {
  Database database(path);
  Query query(database, "SELECT properties FROM content WHERE record = ?1");
  std::size_t bytes = 0;
  for (std::size_t i = 0; i < times; ++i) {
    query.bind(1, 1);
    if (!query.step()) throw std::runtime_error("there is no record 1");
    bytes += query.size(0);
    query.reset();
  }
  return bytes;
}

}  // namespace ox::bench::plain
