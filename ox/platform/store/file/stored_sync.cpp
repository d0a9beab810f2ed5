#include "ox/platform/store/file/stored_sync.hpp"

#include <algorithm>
#include <limits>

#include "ox/base/sqlite/row_sum.hpp"

namespace ox {
namespace {

// Each asked once a run, so none is kept prepared.

constexpr std::string_view kLogins =
    "SELECT id, name, kind, url, user, password_kind, password_source, scheme, principal, homes, "
    "origins, client_certificate, authorities, allow_http, not_before, "
    "sound FROM sync_login ORDER BY id";

constexpr std::string_view kBooks =
    "SELECT c.identifier, b.login, b.url, b.name, b.read_only, b.token, b.reports, "
    "b.versions, b.most_bytes, b.group_spelling, b.last_whole, b.last_success, b.state, b.sent, "
    "b.sound AND c.sound "
    "FROM sync_book b JOIN container c ON c.id = b.container ORDER BY b.container";

constexpr int kCardColumns = 14;
constexpr std::string_view kCard =
    "s.id, s.container, s.record, s.kind, s.href, s.path, s.etag, s.uid, s.fingerprint, s.beside, "
    "s.intent, s.keeps_less, s.refused, s.refused_fingerprint, s.checksum, "
    "r.uid, r.id IS NOT NULL, r.sound, c.fingerprint, c.record IS NOT NULL, c.sound ";

// The values first: what differs is then found before the record is looked for.
constexpr std::string_view kRecordOfCard =
    "LEFT JOIN content c ON c.record = s.record LEFT JOIN record r ON r.id = s.record ";

constexpr std::string_view kRecordsWithoutCard =
    "SELECT r.id, r.uid, r.kind, r.container, r.checksum, c.fingerprint, c.sound FROM record r "
    "LEFT JOIN content c ON c.record = r.id WHERE r.container = ?1 AND NOT EXISTS("
    "SELECT 1 FROM sync_card s WHERE s.container = ?1 AND s.record = r.id) ORDER BY r.id";

constexpr std::string_view kTexts =
    "SELECT k.rowid, t.text, t.agreed, t.tags, t.members, t.sent, t.sound FROM keys(?1) k "
    "CROSS JOIN sync_card s ON s.id = k.key LEFT JOIN sync_text t ON t.card = s.id";

constexpr std::string_view kConflicts =
    "SELECT x.id, c.identifier, s.path, x.property, x.theirs, x.ours, x.base, x.at, "
    "x.sound AND s.sound AND c.sound FROM sync_conflict x JOIN sync_card s ON s.id = x.card "
    "JOIN container c ON c.id = s.container ORDER BY x.id";

constexpr std::string_view kRuns =
    "SELECT began, ended, counts, outcome, sound FROM sync_run WHERE container = ?1 "
    "ORDER BY id DESC LIMIT ?2";

// The next columns of a row, one after another.
class Columns {
 public:
  explicit Columns(const sqlite::Statement& row) : row_(row) {}

  std::string text() { return std::string(row_.text(next_++)); }
  std::string blob() { return std::string(row_.blob(next_++)); }
  std::int64_t number() { return row_.integer(next_++); }
  std::uint64_t unsignedNumber() { return static_cast<std::uint64_t>(number()); }
  bool flag() { return number() != 0; }
  void skip() { ++next_; }

 private:
  const sqlite::Statement& row_;
  int next_ = 0;
};

SyncCard cardOfRow(const sqlite::Statement& row, const std::string& container) {
  if (!sqlite::isSound(row, kCardColumns)) throw DamagedRow("the row of a card is damaged");
  Columns columns(row);
  SyncCard card;
  card.id = columns.number();
  card.container = container;
  columns.skip();
  columns.skip();
  card.kind = columns.flag() ? RecordKind::Group : RecordKind::Person;
  card.href = columns.text();
  card.path = columns.text();
  card.etag = columns.text();
  card.uid = columns.text();
  card.fingerprint = columns.unsignedNumber();
  card.beside = columns.unsignedNumber();
  card.intent = static_cast<SyncCard::Intent>(columns.number());
  card.keepsLess = columns.text();
  card.refused = columns.text();
  card.refusedFingerprint = columns.unsignedNumber();
  return card;
}

// A record that has lost its values is not gone, and neither are values without their record.
SyncCardNow cardNowOfRow(const sqlite::Statement& row, const std::string& container) {
  SyncCardNow now{cardOfRow(row, container), std::nullopt};
  const bool hasRecord = row.integer(kCardColumns + 2) != 0;
  const bool hasContent = row.integer(kCardColumns + 5) != 0;
  if (hasRecord != hasContent) throw DamagedRow("the record of a card is damaged");
  if (!hasRecord) return now;
  now.card.record = soundKey(row, kCardColumns + 1, kCardColumns + 3);
  requireSound(row, kCardColumns + 6, "a row of stored values");
  now.now = static_cast<std::uint64_t>(row.integer(kCardColumns + 4));
  return now;
}

}  // namespace

std::string textOfLines(const std::vector<std::string>& lines) {
  std::string text;
  for (const auto& line : lines) text.append(line).push_back('\n');
  return text;
}

std::vector<std::string> linesOf(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const auto end = text.find('\n');
    lines.emplace_back(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return lines;
}

std::vector<SyncLogin> StoredSync::logins() {
  std::vector<SyncLogin> logins;
  auto rows = prepare(kLogins);
  while (rows.step()) {
    requireSound(rows, 15, "the row of a login");
    Columns columns(rows);
    auto& login = logins.emplace_back();
    login.id = columns.number();
    login.name = columns.text();
    login.kind = columns.text();
    login.url = columns.text();
    login.user = columns.text();
    login.passwordKind = columns.text();
    login.passwordSource = columns.text();
    login.scheme = columns.text();
    login.principal = columns.text();
    login.homes = linesOf(columns.text());
    login.origins = linesOf(columns.text());
    login.clientCertificate = columns.text();
    login.authorities = columns.text();
    login.allowHttp = columns.flag();
    login.notBefore = columns.number();
  }
  return logins;
}

std::vector<SyncBook> StoredSync::books() {
  std::vector<SyncBook> books;
  auto rows = prepare(kBooks);
  while (rows.step()) {
    requireSound(rows, 14, "the row of a synchronised account");
    Columns columns(rows);
    auto& book = books.emplace_back();
    book.container = columns.text();
    book.login = columns.number();
    book.url = columns.text();
    book.name = columns.text();
    book.readOnly = static_cast<SyncBook::ReadOnly>(columns.number());
    book.token = columns.text();
    book.reports = columns.text();
    book.versions = columns.text();
    book.mostBytes = columns.unsignedNumber();
    book.groupSpelling = columns.text();
    book.lastWhole = columns.number();
    book.lastSuccess = columns.number();
    book.state = static_cast<SyncBook::State>(columns.number());
    book.sent = columns.text();
  }
  return books;
}

// What differs is found in the index and in the rows of values alone; both are gone through in
// their order.
std::vector<SyncCardNow> StoredSync::cards(const Container& container, Which which) {
  auto sql = std::string("SELECT ").append(kCard).append("FROM sync_card s ");
  if (which == Which::Changed) sql.append("INDEXED BY sync_card_record ");
  sql.append(kRecordOfCard).append("WHERE s.container = ?1 ");
  if (which == Which::OfGroups) sql.append("AND s.kind = 1 ");
  if (which == Which::Tagged) sql.append("AND s.kind = 0 AND s.beside <> 0 ");
  if (which == Which::Refused) sql.append("AND s.refused <> '' ");
  if (which == Which::Changed) {
    sql.append(
        "AND (s.intent <> 0 OR (s.record IS NOT NULL AND "
        "c.fingerprint IS NOT s.fingerprint)) ");
  }
  auto rows = prepare(sql.append("ORDER BY s.id"));
  rows.bind(1, container.row);
  std::vector<SyncCardNow> cards;
  while (rows.step()) cards.push_back(cardNowOfRow(rows, container.identifier));
  return cards;
}

std::vector<SyncCardNow> StoredSync::cardsAt(const Container& container,
                                             std::span<const std::string> paths) {
  std::vector<SyncCardNow> cards(paths.size());
  sqlite::KeyList asked;
  asked.reserve(paths.size());
  for (const auto& path : paths) asked.addText(path);
  auto rows = prepare(std::string("SELECT ")
                          .append(kCard)
                          .append(", k.rowid FROM keys(?1) k CROSS JOIN sync_card s "
                                  "ON s.container = ?2 AND s.path = k.key ")
                          .append(kRecordOfCard));
  rows.bindKeys(1, asked).bind(2, container.row);
  while (rows.step()) {
    cards[static_cast<std::size_t>(rows.integer(kCardColumns + 7))] =
        cardNowOfRow(rows, container.identifier);
  }
  return cards;
}

std::size_t StoredSync::countCards(std::int32_t container) {
  auto count = prepare("SELECT count(*) FROM sync_card WHERE container = ?1");
  count.bind(1, container);
  return count.step() ? static_cast<std::size_t>(count.integer(0)) : 0;
}

std::size_t StoredSync::countAgreedCards(std::int32_t container) {
  auto count = prepare("SELECT count(*) FROM sync_card WHERE container = ?1 AND fingerprint <> 0");
  count.bind(1, container);
  return count.step() ? static_cast<std::size_t>(count.integer(0)) : 0;
}

std::vector<RecordWithoutCard> StoredSync::recordsWithoutCard(std::int32_t container) {
  std::vector<RecordWithoutCard> records;
  auto rows = prepare(kRecordsWithoutCard);
  rows.bind(1, container);
  while (rows.step()) {
    const auto entry = entryOfRow(rows);
    requireSound(rows, 6, "a row of stored values");
    records.push_back({entry.key, entry.kind, static_cast<std::uint64_t>(rows.integer(5))});
  }
  return records;
}

std::vector<SyncCard::Texts> StoredSync::texts(std::span<const std::int64_t> ids) {
  std::vector<SyncCard::Texts> texts(ids.size());
  sqlite::KeyList asked;
  asked.reserve(ids.size());
  for (const auto id : ids) asked.add(id);
  auto rows = prepare(kTexts);
  rows.bindKeys(1, asked);
  while (rows.step()) {
    requireSound(rows, 6, "the text of a card");
    Columns columns(rows);
    auto& each = texts[static_cast<std::size_t>(columns.number())];
    each.text = columns.blob();
    each.agreed = columns.blob();
    each.tags = columns.blob();
    each.members = columns.blob();
    each.sent = columns.blob();
  }
  return texts;
}

std::vector<SyncConflict> StoredSync::conflicts() {
  std::vector<SyncConflict> conflicts;
  auto rows = prepare(kConflicts);
  while (rows.step()) {
    requireSound(rows, 8, "the row of a conflict");
    Columns columns(rows);
    auto& conflict = conflicts.emplace_back();
    conflict.id = columns.number();
    conflict.container = columns.text();
    conflict.path = columns.text();
    conflict.property = columns.text();
    conflict.theirs = columns.blob();
    conflict.ours = columns.blob();
    conflict.base = columns.blob();
    conflict.at = columns.number();
  }
  return conflicts;
}

std::vector<SyncRun> StoredSync::runs(const Container& container, std::size_t atMost) {
  std::vector<SyncRun> runs;
  auto rows = prepare(kRuns);
  constexpr std::size_t kMost = std::numeric_limits<std::int64_t>::max();
  rows.bind(1, container.row).bind(2, static_cast<std::int64_t>(std::min(atMost, kMost)));
  while (rows.step()) {
    requireSound(rows, 4, "the row of a run");
    Columns columns(rows);
    auto& run = runs.emplace_back();
    run.container = container.identifier;
    run.start = columns.number();
    run.end = columns.number();
    run.counts = columns.blob();
    run.outcome = columns.text();
  }
  return runs;
}

}  // namespace ox
