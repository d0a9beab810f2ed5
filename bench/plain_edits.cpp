#include "bench/plain_edits.hpp"

#include <random>
#include <utility>

#include "bench/figures.hpp"
#include "bench/plain_database.hpp"

namespace ox::bench::plain {
namespace {

constexpr std::int64_t kPerson = 0;
constexpr std::int64_t kGroup = 1;
constexpr std::size_t kUidBytes = 16;
// What the store keeps for a person without values takes about as much.
const std::string kEmptyPerson(8, '\0');

using Ids = std::vector<std::int64_t>;

Ids idsOf(Database& database, std::int64_t kind) {
  Query query(database, "SELECT id FROM record WHERE kind = ?1 ORDER BY id");
  query.bind(1, kind);
  Ids ids;
  while (query.step()) ids.push_back(query.number(0));
  return ids;
}

// Every so manieth, with all that hangs on it.
void removeRecords(Database& database, const Ids& ids, std::size_t step) {
  Query record(database, "DELETE FROM record WHERE id = ?1");
  Query removal(database, "INSERT INTO change(what, record) VALUES(3, ?1)");
  for (std::size_t i = 0; i < ids.size(); i += step) {
    record.bind(1, ids[i]);
    record.finish();
    removal.bind(1, ids[i]);
    removal.finish();
  }
}

std::int64_t nextId(Database& database) {
  Query query(database, "SELECT max(next_record) FROM act");
  query.step();
  return query.number(0);
}

// Above every act that the store holds already.
constexpr std::int64_t kFirstAct = 1'000'000'000;

// The statements that an empty record takes.
class RecordWriter {
 public:
  explicit RecordWriter(Database& database)
      : next_(nextId(database)),
        act_(
            database,
            "INSERT INTO act(number, name, at, origin, next_record, next_link, next_change, bytes) "
            "VALUES(?1, x'00112233445566778899AABBCCDDEEFF', 1700000000000, 1, ?2, 1, 1, 0)"),
        record_(database, "INSERT INTO record(id, uid, kind, container) VALUES(?1, ?2, ?3, 1)"),
        content_(database,
                 "INSERT INTO content(record, fingerprint, properties) VALUES(?1, ?2, ?3)") {}

  std::int64_t write(std::int64_t kind) {
    std::string uid(kUidBytes, '\0');
    for (auto& byte : uid) byte = static_cast<char>(random_());
    record_.bind(1, next_);
    record_.bindBlob(2, uid);
    record_.bind(3, kind);
    record_.finish();
    content_.bind(1, next_);
    content_.bind(2, next_);
    content_.bindBlob(3, kEmptyPerson);
    content_.finish();
    act_.bind(1, kFirstAct + next_);
    act_.bind(2, next_ + 1);
    act_.finish();
    return next_++;
  }

 private:
  std::mt19937_64 random_{1};
  std::int64_t next_;
  Query act_, record_, content_;
};

// The statements that the values of a record take.
class ContentWriter {
 public:
  explicit ContentWriter(Database& database)
      : content_(database,
                 "UPDATE content SET fingerprint = ?2, properties = ?3 WHERE record = ?1"),
        picture_(database, "UPDATE content SET image = ?1 WHERE record = ?1"),
        image_(database, "INSERT INTO image(id, checksum, data) VALUES(?1, ?2, ?3)") {}

  void write(std::int64_t id, const Rows::Record& row) {
    values(id, row.fingerprint, row.properties);
    if (row.image.empty()) return;
    image_.bind(1, id);
    image_.bind(2, row.imageChecksum);
    image_.bindBlob(3, row.image);
    image_.finish();
    picture_.bind(1, id);
    picture_.finish();
  }
  void values(std::int64_t id, std::int64_t fingerprint, const std::string& properties) {
    content_.bind(1, id);
    content_.bind(2, fingerprint);
    content_.bindBlob(3, properties);
    content_.finish();
  }

 private:
  Query content_, picture_, image_;
};

// Runs a statement for each pair of numbers in one synced transaction.
double runForEach(Database& database, const char* sql,
                  const std::vector<std::pair<std::int64_t, std::int64_t>>& pairs) {
  Query query(database, sql);
  database.run("PRAGMA synchronous=FULL");
  const Stopwatch watch;
  database.run("BEGIN IMMEDIATE");
  for (const auto& [first, second] : pairs) {
    query.bind(1, first);
    query.bind(2, second);
    query.finish();
  }
  database.run("COMMIT");
  return watch.seconds();
}

std::vector<std::pair<std::int64_t, std::int64_t>> linksOf(Database& database) {
  Query query(database, "SELECT parent, child FROM link ORDER BY id");
  std::vector<std::pair<std::int64_t, std::int64_t>> links;
  while (query.step()) links.emplace_back(query.number(0), query.number(1));
  return links;
}

Ids addOneByOne(Database& database, std::size_t count) {
  RecordWriter writer(database);
  Ids ids;
  ids.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    database.run("BEGIN IMMEDIATE");
    ids.push_back(writer.write(kPerson));
    database.run("COMMIT");
  }
  return ids;
}

}  // namespace

double addLinks(const std::string& path) {
  Database database(path);
  const auto group = RecordWriter(database).write(kGroup);
  std::vector<std::pair<std::int64_t, std::int64_t>> links;
  for (const auto person : idsOf(database, kPerson)) links.emplace_back(group, person);
  return runForEach(database,
                    "INSERT INTO link(parent, child) VALUES(?1, ?2) "
                    "ON CONFLICT(child, parent) DO NOTHING",
                    links);
}

double removeLinks(const std::string& path) {
  addLinks(path);
  Database database(path);
  return runForEach(database, "DELETE FROM link WHERE parent = ?1 AND child = ?2",
                    linksOf(database));
}

double listLinks(const std::string& path, std::size_t expected) {
  Database database(path);
  const Stopwatch watch;
  const auto links = linksOf(database);
  const auto seconds = watch.seconds();
  if (links.size() < expected) throw std::runtime_error("memberships are missing");
  return seconds;
}

double removePersons(const std::string& path, std::size_t step) {
  Database database(path);
  const auto ids = idsOf(database, kPerson);
  database.run("PRAGMA synchronous=FULL");
  const Stopwatch watch;
  database.run("BEGIN IMMEDIATE");
  removeRecords(database, ids, step);
  database.run("COMMIT");
  return watch.seconds();
}

double removeContainer(const std::string& path, const std::string& container) {
  Database database(path);
  database.run("PRAGMA synchronous=FULL");
  Query ofContainer(database,
                    "SELECT record.id FROM record JOIN container ON container.id = "
                    "record.container WHERE container.identifier = ?1 ORDER BY record.id");
  Query removal(database, "DELETE FROM container WHERE identifier = ?1");
  ofContainer.bindText(1, container);
  removal.bindText(1, container);
  const Stopwatch watch;
  database.run("BEGIN IMMEDIATE");
  Ids ids;
  while (ofContainer.step()) ids.push_back(ofContainer.number(0));
  removeRecords(database, ids, 1);
  removal.finish();
  database.run("COMMIT");
  return watch.seconds();
}

double addPersons(const std::string& path, std::size_t count) {
  Database database(path);
  const Stopwatch watch;
  addOneByOne(database, count);
  return watch.seconds();
}

double editSynced(const std::string& path, std::size_t count) {
  Database database(path);
  const auto ids = idsOf(database, kPerson);
  const std::string properties(400, 'p');
  ContentWriter writer(database);
  database.run("PRAGMA synchronous=FULL");
  const Stopwatch watch;
  for (std::size_t i = 0; i < count; ++i) {
    database.run("BEGIN IMMEDIATE");
    writer.values(ids[i % ids.size()], static_cast<std::int64_t>(i), properties);
    database.run("COMMIT");
  }
  return watch.seconds();
}

double removePictures(const std::string& path) {
  Database database(path);
  const Stopwatch watch;
  database.run(
      "PRAGMA synchronous=FULL; DELETE FROM image; "
      "UPDATE content SET image = NULL WHERE image IS NOT NULL; PRAGMA wal_checkpoint(TRUNCATE)");
  return watch.seconds();
}

double readContent(const std::string& path) {
  Database database(path);
  Query query(database,
              "SELECT c.properties, i.data FROM content c LEFT JOIN image i "
              "ON i.id = c.image ORDER BY c.record");
  std::size_t bytes = 0;
  const Stopwatch watch;
  while (query.step()) bytes += query.size(0) + query.size(1);
  keep(bytes);
  return watch.seconds();
}

double fillPersons(const std::string& path, const Rows& rows) {
  Database database(path);
  RecordWriter records(database);
  ContentWriter contents(database);
  const Stopwatch watch;
  database.run("PRAGMA synchronous=FULL");
  database.run("BEGIN IMMEDIATE");
  for (const auto& row : rows.records) contents.write(records.write(kPerson), row);
  database.run("COMMIT");
  return watch.seconds();
}

}  // namespace ox::bench::plain
