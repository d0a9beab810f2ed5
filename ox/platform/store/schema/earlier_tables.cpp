#include "ox/platform/store/schema/earlier_tables.hpp"

#include <string_view>

#include "ox/base/sqlite/row_sum.hpp"

namespace ox {

const char* const kTablesOfVersion1 = R"sql(
CREATE TABLE container(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  identifier TEXT NOT NULL UNIQUE,
  name TEXT NOT NULL,
  type INTEGER NOT NULL);
CREATE TABLE counter(next_record INTEGER NOT NULL);
CREATE TABLE record(
  id INTEGER PRIMARY KEY,
  uid BLOB NOT NULL UNIQUE,
  kind INTEGER NOT NULL,
  container INTEGER NOT NULL REFERENCES container(id));
CREATE TABLE content(
  record INTEGER PRIMARY KEY REFERENCES record(id) ON DELETE CASCADE,
  card_uid TEXT,
  fingerprint INTEGER NOT NULL,
  properties BLOB NOT NULL);
CREATE INDEX content_card_uid ON content(card_uid) WHERE card_uid IS NOT NULL;
CREATE INDEX content_fingerprint ON content(fingerprint);
CREATE TABLE image(
  record INTEGER PRIMARY KEY REFERENCES record(id) ON DELETE CASCADE,
  checksum INTEGER NOT NULL,
  data BLOB NOT NULL);
CREATE TABLE link(
  id INTEGER PRIMARY KEY,
  parent INTEGER NOT NULL REFERENCES record(id) ON DELETE CASCADE,
  child INTEGER NOT NULL REFERENCES record(id) ON DELETE CASCADE);
CREATE INDEX link_parent ON link(parent);
CREATE UNIQUE INDEX link_child ON link(child, parent);
CREATE TABLE removal(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  record INTEGER NOT NULL);
CREATE TABLE custom_property(
  name TEXT PRIMARY KEY,
  type INTEGER NOT NULL);
)sql";

const char* const kTablesOfVersion2 = R"sql(
CREATE TABLE container(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  identifier TEXT NOT NULL UNIQUE,
  name TEXT NOT NULL,
  type INTEGER NOT NULL);
CREATE TABLE record(
  id INTEGER PRIMARY KEY,
  uid BLOB NOT NULL UNIQUE,
  kind INTEGER NOT NULL,
  container INTEGER NOT NULL REFERENCES container(id));
CREATE TABLE custom_property(
  name TEXT PRIMARY KEY,
  type INTEGER NOT NULL);
CREATE TABLE link(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  parent INTEGER NOT NULL REFERENCES record(id) ON DELETE CASCADE,
  child INTEGER NOT NULL REFERENCES record(id) ON DELETE CASCADE);
CREATE INDEX link_parent ON link(parent);
CREATE UNIQUE INDEX link_child ON link(child, parent);
CREATE TABLE content(
  record INTEGER PRIMARY KEY REFERENCES record(id) ON DELETE CASCADE,
  card_uid TEXT,
  fingerprint INTEGER NOT NULL,
  image INTEGER,
  properties BLOB NOT NULL);
CREATE TABLE image(
  id INTEGER PRIMARY KEY,
  checksum INTEGER NOT NULL,
  data BLOB NOT NULL);
CREATE INDEX content_card_uid ON content(card_uid) WHERE card_uid IS NOT NULL;
CREATE INDEX content_fingerprint ON content(fingerprint);
CREATE TABLE store(name BLOB NOT NULL);
CREATE TABLE origin(
  id INTEGER PRIMARY KEY,
  program TEXT NOT NULL,
  command TEXT NOT NULL,
  together INTEGER NOT NULL,
  undoes INTEGER,
  first_act INTEGER NOT NULL);
CREATE INDEX origin_undoes ON origin(undoes) WHERE undoes IS NOT NULL;
CREATE TABLE act(
  number INTEGER PRIMARY KEY,
  name BLOB NOT NULL,
  at INTEGER NOT NULL,
  origin INTEGER NOT NULL,
  next_record INTEGER NOT NULL,
  next_change INTEGER NOT NULL,
  bytes INTEGER NOT NULL);
CREATE TABLE change(
  id INTEGER PRIMARY KEY,
  what INTEGER NOT NULL,
  record INTEGER,
  container INTEGER,
  other INTEGER,
  place INTEGER,
  before BLOB,
  after BLOB);
CREATE TABLE tag_debt(number INTEGER PRIMARY KEY);
CREATE TABLE setting(name TEXT PRIMARY KEY, value INTEGER NOT NULL) WITHOUT ROWID;
)sql";

namespace {

constexpr std::string_view kTablesOfVersion3 = R"sql(
CREATE TABLE container(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  identifier TEXT NOT NULL UNIQUE,
  name TEXT NOT NULL,
  type INTEGER NOT NULL,
  SUM(id, identifier, name, type));
CREATE TABLE record(
  id INTEGER PRIMARY KEY,
  uid BLOB NOT NULL UNIQUE,
  kind INTEGER NOT NULL,
  container INTEGER NOT NULL REFERENCES container(id),
  SUM(id, uid, kind, container));
CREATE TABLE custom_property(
  name TEXT PRIMARY KEY,
  type INTEGER NOT NULL,
  SUM(name, type));
CREATE TABLE link(
  id INTEGER PRIMARY KEY,
  parent INTEGER NOT NULL REFERENCES record(id) ON DELETE CASCADE,
  child INTEGER NOT NULL REFERENCES record(id) ON DELETE CASCADE,
  SUM(id, parent, child));
CREATE INDEX link_parent ON link(parent);
CREATE UNIQUE INDEX link_child ON link(child, parent);
CREATE TABLE content(
  record INTEGER PRIMARY KEY REFERENCES record(id) ON DELETE CASCADE,
  card_uid TEXT,
  fingerprint INTEGER NOT NULL,
  image INTEGER,
  properties BLOB NOT NULL,
  SUM(record, card_uid, fingerprint, image));
CREATE TABLE image(
  id INTEGER PRIMARY KEY,
  checksum INTEGER NOT NULL,
  data BLOB NOT NULL);
CREATE INDEX content_card_uid ON content(card_uid) WHERE card_uid IS NOT NULL;
CREATE INDEX content_fingerprint ON content(fingerprint);
CREATE TABLE store(
  name BLOB NOT NULL,
  SUM(name));
CREATE TABLE origin(
  id INTEGER PRIMARY KEY,
  program TEXT NOT NULL,
  command TEXT NOT NULL,
  together INTEGER NOT NULL,
  undoes INTEGER,
  first_act INTEGER NOT NULL,
  SUM(id, program, command, together, undoes, first_act));
CREATE INDEX origin_undoes ON origin(undoes) WHERE undoes IS NOT NULL;
CREATE TABLE act(
  number INTEGER PRIMARY KEY,
  name BLOB NOT NULL,
  at INTEGER NOT NULL,
  origin INTEGER NOT NULL,
  next_record INTEGER NOT NULL,
  next_link INTEGER NOT NULL,
  next_change INTEGER NOT NULL,
  bytes INTEGER NOT NULL,
  SUM(number, name, at, origin, next_record, next_link, next_change, bytes));
CREATE TABLE change(
  id INTEGER PRIMARY KEY,
  what INTEGER NOT NULL,
  record INTEGER,
  container INTEGER,
  other INTEGER,
  place INTEGER,
  before BLOB,
  after BLOB,
  SUM(id, what, record, container, other, place, before, after));
CREATE TABLE tag_debt(
  number INTEGER PRIMARY KEY,
  SUM(number));
CREATE TABLE setting(
  name TEXT PRIMARY KEY,
  value INTEGER NOT NULL,
  SUM(name, value)) WITHOUT ROWID;
)sql";

}  // namespace

std::string tablesOfVersion3() {
  return sqlite::withRowSums(std::string(kTablesOfVersion3));
}

}  // namespace ox
