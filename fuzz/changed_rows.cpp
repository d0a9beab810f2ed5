#include "fuzz/changed_rows.hpp"

#include <algorithm>
#include <array>

#include "fuzz/scratch_file.hpp"
#include "ox/base/checksum.hpp"
#include "ox/base/failure.hpp"
#include "ox/platform/store/schema/earlier_tables.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/records/property_codec.hpp"

namespace ox::fuzz {
namespace {

constexpr Table kContainer{"container", "id, identifier, name, type", 4};
constexpr Table kRecord{"record", "id, uid, kind, container", 4};
constexpr Table kCustomProperty{"custom_property", "name, type", 2};
constexpr Table kLink{"link", "id, parent, child", 3};
constexpr Table kContent{"content", "record, card_uid, fingerprint, image, properties", 5};
constexpr Table kImage{"image", "id, checksum, data", 3};
constexpr Table kStore{"store", "name", 1};
constexpr Table kOrigin{"origin", "id, program, command, together, undoes, first_act", 6};
constexpr Table kChange{"change", "id, what, record, container, other, place, before, after", 8};
constexpr Table kTagDebt{"tag_debt", "number", 1};
constexpr Table kSetting{"setting", "name, value", 2};

constexpr std::array kTablesOf1 = {
    kContainer,
    kRecord,
    kCustomProperty,
    kLink,
    Table{"content", "record, card_uid, fingerprint, properties", 4},
    Table{"image", "record, checksum, data", 3},
    Table{"counter", "next_record", 1},
    Table{"removal", "id, record", 2},
};
// Those of every version since the second, which differ in what an act tells.
constexpr auto tablesWith(const Table& act) {
  return std::array{kContainer, kRecord, kCustomProperty, kLink,    kContent, kImage, kStore,
                    kOrigin,    act,     kChange,         kTagDebt, kSetting};
}
constexpr auto kTablesOf2 =
    tablesWith({"act", "number, name, at, origin, next_record, next_change, bytes", 7});
constexpr auto kTablesOf3 =
    tablesWith({"act", "number, name, at, origin, next_record, next_link, next_change, bytes", 8});
constexpr std::array kSyncTables = {
    Table{"sync_login",
          "id, name, kind, url, user, password_kind, password_source, scheme, principal, homes, "
          "origins, client_certificate, authorities, allow_http, not_before",
          15},
    Table{"sync_book",
          "container, login, url, name, read_only, token, reports, versions, most_bytes, "
          "group_spelling, last_whole, last_success, state, sent",
          14},
    Table{"sync_card",
          "id, container, record, kind, href, path, etag, uid, fingerprint, beside, intent, "
          "keeps_less, refused, refused_fingerprint",
          14},
    Table{"sync_text", "card, text, agreed, tags, members, sent", 6},
    Table{"sync_conflict", "id, card, property, theirs, ours, base, at", 7},
    Table{"sync_run", "id, container, began, ended, counts, outcome", 6},
};
constexpr auto kTables = [] {
  std::array<Table, kTablesOf3.size() + kSyncTables.size()> all{};
  std::ranges::copy(kSyncTables, std::ranges::copy(kTablesOf3, all.begin()).out);
  return all;
}();
constexpr std::size_t kMostColumns = 17;

constexpr const char* kRowsOf1 = R"sql(
INSERT INTO removal(record) VALUES(1), (4), (8);
INSERT INTO counter VALUES(9);
PRAGMA user_version=1;
)sql";

constexpr const char* kRowsOf2 = R"sql(
INSERT INTO store VALUES(x'00112233445566778899aabbccddeeff');
INSERT INTO origin VALUES(1, 'oxcontacts', 'a command', 0, NULL, 1);
INSERT INTO act VALUES
  (0, x'00000000000000000000000000000000', 1700000000000, 0, 1, 1, 0),
  (1, x'00000000000000000000000000000001', 1700000001000, 1, 9, 1, 24),
  (2, x'00000000000000000000000000000002', 1700000002000, 1, 9, 4, 168);
INSERT INTO change(id, what, record, container, other, place) VALUES
  (1, 5, 5, 1, 2, 7), (2, 5, 5, 1, 3, 8), (3, 6, 5, 1, 3, 8);
INSERT INTO setting VALUES('journal_days', 36500);
INSERT INTO tag_debt VALUES(2);
PRAGMA user_version=2;
)sql";

constexpr const char* kRowsOf3 = R"sql(
INSERT INTO store VALUES(x'00112233445566778899aabbccddeeff');
INSERT INTO origin VALUES(1, 'oxcontacts', 'a command', 0, NULL, 1);
INSERT INTO act VALUES
  (0, x'00000000000000000000000000000000', 1700000000000, 0, 1, 1, 1, 0),
  (1, x'00000000000000000000000000000001', 1700000001000, 1, 9, 8, 1, 24);
INSERT INTO setting VALUES('journal_days', 36500);
INSERT INTO tag_debt VALUES(1);
PRAGMA user_version=3;
)sql";

constexpr const char* kRows = R"sql(
INSERT INTO container(identifier, name, type) VALUES('_local:ABAccount', 'On My Mac', 1),
  ('A:ABAccount', 'Cloud', 3);
INSERT INTO record VALUES(2, 'ann', 0, 1), (3, 'ben', 0, 2), (5, 'friends', 1, 1);
INSERT INTO link VALUES(7, 5, 2);
PRAGMA application_id=1333281090;
)sql";

std::string makeStore(int version) {
  const auto path = scratchPath("made-earlier.db");
  writeDatabase(path, {});
  {
    sqlite::Connection store(path, sqlite::Connection::Mode::ReadWriteCreate);
    store.execute("PRAGMA page_size=2048");
    store.execute(version == 1   ? kTablesOfVersion1
                  : version == 2 ? kTablesOfVersion2
                                 : tablesOfVersion3().c_str());
    store.execute(kRows);
    store.execute(version == 1 ? kRowsOf1 : version == 2 ? kRowsOf2 : kRowsOf3);
    auto insert =
        store.prepare(version == 1 ? "INSERT INTO content VALUES(?1, NULL, ?2, ?3)"
                                   : "INSERT INTO content VALUES(?1, NULL, ?2, NULL, ?3)");
    for (const auto row : {2, 3, 5}) {
      PropertyBag values;
      values.set(row == 5 ? property_id::kGroupName : property_id::kFirst, Object("name"));
      const auto bytes = encodeProperties(values);
      const sqlite::StatementScope scope(insert);
      insert.bind(1, row)
          .bind(2, static_cast<std::int64_t>(contentFingerprint(values, nullptr)))
          .bindBlob(3, bytes)
          .step();
    }
  }
  return readScratch(path);
}

std::string keyOf(const Table& table) {
  const std::string columns = table.columns;
  return columns.substr(0, columns.find(','));
}

std::string columnOf(const Table& table, int column) {
  const std::string columns = table.columns;
  std::size_t start = 0;
  for (; column > 0; --column) start = columns.find(", ", start) + 2;
  return columns.substr(start, columns.find(',', start) - start);
}

std::string statementOf(const Table& table, int what) {
  const std::string name = table.name;
  if (what == 1) return "DELETE FROM " + name + " WHERE " + keyOf(table) + " = ?";
  if (what > 1) {
    return "UPDATE OR REPLACE " + name + " SET " + columnOf(table, what - 2) + " = ?1 WHERE " +
           keyOf(table) + " >= ?2";
  }
  std::string marks = "?";
  for (int i = 1; i < table.count; ++i) marks += ", ?";
  return "INSERT OR REPLACE INTO " + name + "(" + table.columns + ") VALUES(" + marks + ")";
}

std::string whole(std::string_view input) {
  std::string bytes(input);
  const auto checksum = checksum64(bytes);
  return bytes.append(reinterpret_cast<const char*>(&checksum), sizeof checksum);
}

void bind(sqlite::Statement& statement, int column, Input& input, std::string& room) {
  switch (input.byte() % 8) {
    case 0:
      statement.bindNull(column);
      return;
    case 1:
      room = input.text();
      statement.bindText(column, room);
      return;
    case 2:
      room = input.text();
      statement.bindBlob(column, room);
      return;
    case 3:
      room = whole(input.text());
      statement.bindBlob(column, room);
      return;
    case 4:
      statement.bind(column, input.number());
      return;
    default:
      statement.bind(column, input.byte() % 16);
  }
}

}  // namespace

std::span<const Table> tablesOf(int version) {
  if (version == 1) return kTablesOf1;
  if (version == 2) return kTablesOf2;
  if (version == 3) return kTablesOf3;
  return kTables;
}

const std::string& bytesOfVersion(int version) {
  static const auto first = makeStore(1);
  static const auto second = makeStore(2);
  static const auto third = makeStore(3);
  return version == 1 ? first : version == 2 ? second : third;
}

std::size_t RowChanges::changeOne(Input& input) {
  const auto which = input.byte() % tables_.size();
  const auto& table = tables_[which];
  const auto what = input.byte() % (table.count + 2);
  auto& statement = statements_[{which, what}];
  if (!statement) statement = database_.prepare(statementOf(table, what));
  const sqlite::StatementScope scope(statement);
  std::array<std::string, kMostColumns> room;
  const int columns = what == 0 ? table.count : what == 1 ? 1 : 2;
  for (int i = 1; i <= columns; ++i) {
    bind(statement, i, input, room[static_cast<std::size_t>(i) - 1]);
  }
  try {
    statement.step();
  } catch (const FailureError&) {
  }
  return which;
}

}  // namespace ox::fuzz
