#include "ox/platform/store/schema/tables.hpp"

#include <string_view>

#include "ox/base/sqlite/row_sum.hpp"

namespace ox {
namespace {

// SUM(columns): a row carries a checksum of them, and tells whether it is sound. Blobs of values
// and pictures have one of their own.
//
// record: uid holds the 16 bytes of our own identifiers (see RecordKey), any other identifier as
// text. Row numbers rise and are never given to another record.
// link: its number tells the order of adding, and is never given to another link: one that comes
// back as it was stands where it stood. The acts count the numbers.
constexpr std::string_view kRecordTables = R"sql(
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
)sql";

constexpr std::string_view kLinkTable = R"sql(
CREATE TABLE link(
  id INTEGER PRIMARY KEY,
  parent INTEGER NOT NULL REFERENCES record(id) ON DELETE CASCADE,
  child INTEGER NOT NULL REFERENCES record(id) ON DELETE CASCADE,
  SUM(id, parent, child));
CREATE INDEX link_parent ON link(parent);
CREATE UNIQUE INDEX link_child ON link(child, parent);
)sql";

// content: all values of a record in one row, because an import then writes few rows and a record
// is read by one look-up. The blob ends in a checksum of its own (see property_codec.hpp): SQLite
// does not notice a changed byte inside a row. card_uid repeats a value of the blob to find it by;
// fingerprint is contentFingerprint() of values and picture; image is the row of the picture.
// image: apart from the values, which are read far more often; checksum is that of the data. Every
// row has one owner: a row of content, or one of change that keeps what was there before.
constexpr std::string_view kContentTables = R"sql(
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
)sql";

// The journal. store: the name of this store, which no other has.
// origin: who wrote: a program, and the command it was given. together: all acts of this origin are
// one command. undoes: the number of the first act of the command that it takes back. first_act: of
// its own acts.
// act: a commit. next_record, next_link and next_change are those after it, so an act's additions
// are the rows of record from the next_record of the act before it, and its changes likewise: what
// is added and what is new elsewhere is told without a row for each. at is in milliseconds since
// 1970, bytes the sum of the journal up to here.
//
// change: what an act did beside adding; ChangeKind in values/journal_row.hpp tells the columns.
// tag_debt: acts whose changes of tags the tag file may not have followed yet.
// setting: what was set of the bounds of the journal.
constexpr std::string_view kJournalTables = R"sql(
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

// Accounts that are in step with a book elsewhere; values/sync_rows.hpp tells what the columns
// hold. sync_card: record is a row number without a reference, so that the card outlives its
// record, whoever removes that, and is its record's again when that comes back in its row.
// sync_text: apart from the card, since all cards are looked through without it. Lists are texts of
// lines.
constexpr std::string_view kSyncTables = R"sql(
CREATE TABLE sync_login(
  id INTEGER PRIMARY KEY,
  name TEXT NOT NULL UNIQUE,
  kind TEXT NOT NULL,
  url TEXT NOT NULL,
  user TEXT NOT NULL,
  password_kind TEXT NOT NULL,
  password_source TEXT NOT NULL,
  scheme TEXT NOT NULL,
  principal TEXT NOT NULL,
  homes TEXT NOT NULL,
  origins TEXT NOT NULL,
  client_certificate TEXT NOT NULL,
  authorities TEXT NOT NULL,
  allow_http INTEGER NOT NULL,
  not_before INTEGER NOT NULL,
  SUM(id, name, kind, url, user, password_kind, password_source, scheme, principal, homes, origins,
      client_certificate, authorities, allow_http, not_before));
CREATE TABLE sync_book(
  container INTEGER PRIMARY KEY REFERENCES container(id) ON DELETE CASCADE,
  login INTEGER NOT NULL REFERENCES sync_login(id) ON DELETE CASCADE,
  url TEXT NOT NULL,
  name TEXT NOT NULL,
  read_only INTEGER NOT NULL,
  token TEXT NOT NULL,
  reports TEXT NOT NULL,
  versions TEXT NOT NULL,
  most_bytes INTEGER NOT NULL,
  group_spelling TEXT NOT NULL,
  last_whole INTEGER NOT NULL,
  last_success INTEGER NOT NULL,
  state INTEGER NOT NULL,
  sent TEXT NOT NULL,
  SUM(container, login, url, name, read_only, token, reports, versions, most_bytes,
      group_spelling, last_whole, last_success, state, sent));
CREATE TABLE sync_card(
  id INTEGER PRIMARY KEY,
  container INTEGER NOT NULL REFERENCES container(id) ON DELETE CASCADE,
  record INTEGER,
  kind INTEGER NOT NULL,
  href TEXT NOT NULL,
  path TEXT NOT NULL,
  etag TEXT NOT NULL,
  uid TEXT NOT NULL,
  fingerprint INTEGER NOT NULL,
  beside INTEGER NOT NULL,
  intent INTEGER NOT NULL,
  keeps_less TEXT NOT NULL,
  refused TEXT NOT NULL,
  refused_fingerprint INTEGER NOT NULL,
  SUM(id, container, record, kind, href, path, etag, uid, fingerprint, beside, intent, keeps_less,
      refused, refused_fingerprint));
CREATE UNIQUE INDEX sync_card_path ON sync_card(container, path);
CREATE INDEX sync_card_record ON sync_card(container, record, fingerprint, intent);
CREATE TABLE sync_text(
  card INTEGER PRIMARY KEY REFERENCES sync_card(id) ON DELETE CASCADE,
  text BLOB NOT NULL,
  agreed BLOB NOT NULL,
  tags BLOB NOT NULL,
  members BLOB NOT NULL,
  sent BLOB NOT NULL,
  SUM(card, text, agreed, tags, members, sent));
CREATE TABLE sync_conflict(
  id INTEGER PRIMARY KEY,
  card INTEGER NOT NULL REFERENCES sync_card(id) ON DELETE CASCADE,
  property TEXT NOT NULL,
  theirs BLOB NOT NULL,
  ours BLOB NOT NULL,
  base BLOB NOT NULL,
  at INTEGER NOT NULL,
  SUM(id, card, property, theirs, ours, base, at));
CREATE INDEX sync_conflict_card ON sync_conflict(card);
CREATE TABLE sync_run(
  id INTEGER PRIMARY KEY,
  container INTEGER NOT NULL REFERENCES container(id) ON DELETE CASCADE,
  began INTEGER NOT NULL,
  ended INTEGER NOT NULL,
  counts BLOB NOT NULL,
  outcome TEXT NOT NULL,
  SUM(id, container, began, ended, counts, outcome));
CREATE INDEX sync_run_container ON sync_run(container);
)sql";

constexpr std::string_view kFirstRows = R"sql(
INSERT INTO container(identifier, name, type) VALUES('_local:ABAccount', 'On My Mac', 1);
)sql";

}  // namespace

std::string emptyTables() {
  return sqlite::withRowSums(std::string(kRecordTables)
                                 .append(kLinkTable)
                                 .append(kContentTables)
                                 .append(kJournalTables)
                                 .append(kSyncTables));
}

std::string syncTables() {
  return sqlite::withRowSums(std::string(kSyncTables));
}

std::string newJournal(std::string_view nextRecord, std::string_view nextLink) {
  return std::string("INSERT INTO store VALUES(randomblob(16));\n")
      .append("INSERT INTO act VALUES(0, randomblob(16), ")
      .append("CAST((julianday('now') - 2440587.5) * 86400000 AS INTEGER), 0, ")
      .append(nextRecord)
      .append(", ")
      .append(nextLink)
      .append(", 1, 0);\n");
}

std::string newTables() {
  return emptyTables().append(kFirstRows).append(newJournal("1", "1"));
}

}  // namespace ox
