#include "ox/platform/store/schema/migration.hpp"

#include <cassert>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ox/base/sqlite/database_form.hpp"
#include "ox/platform/store/schema/tables.hpp"
#include "ox/platform/store/values/journal_row.hpp"
#include "ox/records/link_list.hpp"

namespace ox {
namespace {

std::vector<std::string> namesOf(sqlite::Connection& file, std::string_view type) {
  std::vector<std::string> names;
  auto rows =
      file.prepare("SELECT name FROM sqlite_schema WHERE type = ?1 AND name NOT LIKE 'sqlite_%'");
  rows.bindText(1, type);
  while (rows.step()) names.emplace_back(rows.text(0));
  return names;
}

// Every table of the earlier version gets another name and loses its indexes, whose names are
// wanted.
void putAside(sqlite::Connection& file) {
  for (const auto& index : namesOf(file, "index")) file.execute(("DROP INDEX " + index).c_str());
  for (const auto& table : namesOf(file, "table")) {
    file.execute(("ALTER TABLE " + table + " RENAME TO old_" + table).c_str());
  }
}

// What refers to other tables goes before them.
void dropOld(sqlite::Connection& file) {
  file.execute("DROP TABLE old_link; DROP TABLE old_content; DROP TABLE old_image;");
  for (const auto& table : namesOf(file, "table")) {
    if (table.starts_with("old_") && table != "old_container") {
      file.execute(("DROP TABLE " + table).c_str());
    }
  }
  file.execute("DROP TABLE old_container");
}

// Row numbers and numbers of links are never given again, also those of what is gone.
constexpr const char* kRecords = R"sql(
INSERT INTO container SELECT id, identifier, name, type FROM old_container ORDER BY id;
UPDATE sqlite_sequence SET seq = (SELECT seq FROM sqlite_sequence WHERE name = 'old_container')
  WHERE name = 'container';
INSERT INTO record SELECT id, uid, kind, container FROM old_record ORDER BY id;
INSERT INTO custom_property SELECT name, type FROM old_custom_property ORDER BY rowid;
INSERT INTO link SELECT id, parent, child FROM old_link ORDER BY id;
)sql";

// It counted its rows in a table of one row and noted the rows that were gone; a picture stood in
// the row of its record, whose number it keeps; there was no journal.
void moveFrom1(sqlite::Connection& file) {
  file.execute(R"sql(
INSERT INTO image SELECT record, checksum, data FROM old_image ORDER BY record;
INSERT INTO content SELECT c.record, c.card_uid, c.fingerprint, i.record, c.properties
  FROM old_content c LEFT JOIN old_image i ON i.record = c.record ORDER BY c.record;
)sql");
  file.execute(newJournal("max((SELECT ifnull(max(next_record), 1) FROM old_counter), "
                          "(SELECT ifnull(max(id), 0) + 1 FROM record), "
                          "(SELECT ifnull(max(record), 0) + 1 FROM old_removal))",
                          "(SELECT ifnull(max(id), 0) + 1 FROM link)")
                   .c_str());
}

// Links of one group that were made, or taken away, one after another by one act.
struct Run {
  std::int64_t id = 0;  // of the first row
  ChangeKind what = ChangeKind::Linked;
  std::int64_t group = 0;
  std::int64_t container = 0;
  std::int64_t end = 0;  // where the changes of the act end
  NumberedLinks links;
};

// In version 2 each link was a row of the journal, with the row of what stood in the group as other
// and its number as place. Each keeps the number of its change.
class LinkPacker {
 public:
  explicit LinkPacker(sqlite::Connection& file)
      : file_(file),
        insert_(file.prepare("INSERT INTO change(id, what, record, container, before, after) "
                             "VALUES(?1, ?2, ?3, ?4, ?5, ?6)")) {}

  void pack() {
    auto rows = file_.prepare(
        "SELECT c.id, c.what, c.record, c.container, c.other, c.place, (SELECT min(next_change) "
        "FROM old_act a WHERE a.next_change > c.id) FROM old_change c WHERE c.what IN (5, 6) "
        "ORDER BY c.id");
    while (rows.step()) {
      if (!goesOn(rows)) {
        write();
        run_ = {rows.integer(0), static_cast<ChangeKind>(rows.integer(1)),
                rows.integer(2), rows.integer(3),
                rows.integer(6), {}};
      }
      run_.links.push_back({rows.integer(4), rows.integer(5)});
    }
    write();
  }

 private:
  bool goesOn(const sqlite::Statement& row) const {
    return row.integer(0) == run_.id + static_cast<std::int64_t>(run_.links.size()) &&
           row.integer(0) < run_.end && row.integer(1) == static_cast<std::int64_t>(run_.what) &&
           row.integer(2) == run_.group;
  }

  void write() {
    if (run_.links.empty()) return;
    const auto bytes = encodeLinks(run_.links);
    insert_.bind(1, run_.id)
        .bind(2, static_cast<std::int64_t>(run_.what))
        .bind(3, run_.group)
        .bind(4, run_.container)
        .bindNull(5)
        .bindNull(6)
        .bindBlob(run_.what == ChangeKind::Unlinked ? 5 : 6, bytes)
        .run();
  }

  sqlite::Connection& file_;
  sqlite::Statement insert_;
  Run run_;
};

void moveFrom2(sqlite::Connection& file) {
  file.execute(R"sql(
INSERT INTO image SELECT id, checksum, data FROM old_image ORDER BY id;
INSERT INTO content SELECT record, card_uid, fingerprint, image, properties FROM old_content
  ORDER BY record;
INSERT INTO store SELECT name FROM old_store;
INSERT INTO origin SELECT id, program, command, together, undoes, first_act FROM old_origin
  ORDER BY id;
INSERT INTO act SELECT number, name, at, origin, next_record,
  (SELECT ifnull(max(seq), 0) + 1 FROM sqlite_sequence WHERE name = 'old_link'),
  next_change, bytes FROM old_act ORDER BY number;
INSERT INTO change SELECT id, what, record, container, other, place, before, after
  FROM old_change WHERE what NOT IN (5, 6) ORDER BY id;
INSERT INTO tag_debt SELECT number FROM old_tag_debt ORDER BY number;
INSERT INTO setting SELECT name, value FROM old_setting;
)sql");
  LinkPacker(file).pack();
}

// It has the tables of this version, but for those of accounts in step with a book elsewhere: its
// rows stay where they are.
void moveFrom3(sqlite::Connection& file) {
  file.execute(syncTables().c_str());
  const auto missing =
      sqlite::missingIndexesIn(sqlite::formOf(file).schema, sqlite::schemaMadeBy(emptyTables()));
  for (const auto& index : missing) file.execute(index.words.c_str());
}

}  // namespace

void migrateTables(sqlite::Connection& file, int from) {
  assert(from >= 1 && from < kSchemaVersion);
  if (from == 3) return moveFrom3(file);
  putAside(file);
  file.execute(emptyTables().c_str());
  file.execute(kRecords);
  if (from == 1) {
    moveFrom1(file);
  } else {
    moveFrom2(file);
  }
  dropOld(file);
}

}  // namespace ox
