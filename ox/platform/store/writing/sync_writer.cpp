#include "ox/platform/store/writing/sync_writer.hpp"

#include <set>
#include <vector>

#include "ox/platform/store/file/stored_sync.hpp"

namespace ox {
namespace {

constexpr std::int64_t kKeptRuns = 100;  // of each book

sqlite::KeyList keysOf(const std::vector<std::int64_t>& ids) {
  sqlite::KeyList keys;
  keys.reserve(ids.size());
  for (const auto id : ids) keys.add(id);
  return keys;
}

std::int64_t stored(std::uint64_t number) {
  return static_cast<std::int64_t>(number);
}

}  // namespace

void SyncWriter::write() {
  const auto& rows = *sync_.rows;
  remove();
  for (const auto& login : rows.logins) write(login);
  for (const auto& book : rows.books) write(book);
  for (std::size_t i = 0; i < rows.cards.size(); ++i) write(rows.cards[i], sync_.records[i]);
  for (const auto& sent : rows.sent) {
    file_.statement(Sql::SetSyncSent).bind(1, sent.card).bindBlob(2, sent.sent).run();
  }
  for (const auto& conflict : rows.conflicts) write(conflict);
  for (const auto& run : rows.runs) write(run);
}

std::int32_t SyncWriter::containerOf(const std::string& identifier) const {
  return rows_.container(sync_.containers.at(identifier));
}

void SyncWriter::remove() {
  const auto& rows = *sync_.rows;
  const auto conflicts = keysOf(rows.removedConflicts);
  const auto cards = keysOf(rows.removedCards);
  if (!conflicts.empty()) {
    file_.statement(Sql::DeleteSyncConflicts).bindKeys(1, conflicts).run();
  }
  if (!cards.empty()) file_.statement(Sql::DeleteSyncCards).bindKeys(1, cards).run();
}

void SyncWriter::runOnce(sqlite::Statement& statement, const std::string& otherwise) {
  statement.run();
  if (file_.connection().changes() == 0) throw RefusedRequest(otherwise);
}

void SyncWriter::write(const SyncLogin& login) {
  const bool isNew = login.id == 0;
  auto& row = file_.statement(isNew ? Sql::InsertSyncLogin : Sql::UpdateSyncLogin);
  const auto homes = textOfLines(login.homes);
  const auto origins = textOfLines(login.origins);
  row.bindText(1, login.name)
      .bindText(2, login.kind)
      .bindText(3, login.url)
      .bindText(4, login.user)
      .bindText(5, login.passwordKind)
      .bindText(6, login.passwordSource)
      .bindText(7, login.scheme)
      .bindText(8, login.principal)
      .bindText(9, homes)
      .bindText(10, origins)
      .bindText(11, login.clientCertificate)
      .bindText(12, login.authorities)
      .bind(13, login.allowHttp ? 1 : 0)
      .bind(14, login.notBefore);
  if (!isNew) row.bind(15, login.id);
  runOnce(row, isNew ? "there is a login \"" + login.name + "\" already"
                     : "the login \"" + login.name + "\" is gone, or another has that name");
}

void SyncWriter::write(const SyncRows::BookOfLogin& of) {
  const auto& book = of.book;
  auto& row = file_.statement(Sql::PutSyncBook);
  row.bind(1, containerOf(book.container))
      .bind(2, book.login)
      .bindText(3, of.login)
      .bindText(4, book.url)
      .bindText(5, book.name)
      .bind(6, static_cast<std::int64_t>(book.readOnly))
      .bindText(7, book.token)
      .bindText(8, book.reports)
      .bindText(9, book.versions)
      .bind(10, stored(book.mostBytes))
      .bindText(11, book.groupSpelling)
      .bind(12, book.lastWhole)
      .bind(13, book.lastSuccess)
      .bind(14, static_cast<std::int64_t>(book.state))
      .bindText(15, book.sent);
  runOnce(row, "the login of the book " + book.url + " is not there");
}

void SyncWriter::write(const SyncCardChange& change, std::optional<std::int64_t> record) {
  const auto& card = change.card;
  const bool isNew = card.id == 0;
  auto& row = file_.statement(isNew ? Sql::InsertSyncCard : Sql::UpdateSyncCard);
  row.bind(1, containerOf(card.container));
  if (record) {
    row.bind(2, rows_.record(*record));
  } else {
    row.bindNull(2);
  }
  row.bind(3, static_cast<std::int64_t>(card.kind))
      .bindText(4, card.href)
      .bindText(5, card.path)
      .bindText(6, card.etag)
      .bindText(7, card.uid)
      .bind(8, stored(card.fingerprint))
      .bind(9, stored(card.beside))
      .bind(10, static_cast<std::int64_t>(card.intent))
      .bindText(11, card.keepsLess)
      .bindText(12, card.refused)
      .bind(13, stored(card.refusedFingerprint));
  if (!isNew) row.bind(14, card.id);
  runOnce(row, isNew ? "there is a card at " + card.path + " already"
                     : "the card at " + card.path + " is gone, or another has that path");
  const auto id = isNew ? file_.connection().lastRowId() : card.id;
  if (change.readTexts) {
    write(id, change.readTexts());
  } else if (isNew || change.texts) {
    write(id, change.texts.value_or(SyncCard::Texts()));
  }
}

void SyncWriter::write(std::int64_t card, const SyncCard::Texts& texts) {
  file_.statement(Sql::PutSyncText)
      .bind(1, card)
      .bindBlob(2, texts.text)
      .bindBlob(3, texts.agreed)
      .bindBlob(4, texts.tags)
      .bindBlob(5, texts.members)
      .bindBlob(6, texts.sent)
      .run();
}

void SyncWriter::write(const SyncConflict& conflict) {
  const bool isNew = conflict.id == 0;
  auto& row = file_.statement(isNew ? Sql::InsertSyncConflict : Sql::UpdateSyncConflict);
  row.bind(1, containerOf(conflict.container))
      .bindText(2, conflict.path)
      .bindText(3, conflict.property)
      .bindBlob(4, conflict.theirs)
      .bindBlob(5, conflict.ours)
      .bindBlob(6, conflict.base)
      .bind(7, conflict.at);
  if (!isNew) row.bind(8, conflict.id);
  runOnce(row, "the conflict of the card at " + conflict.path + " is gone, or the card is");
}

void SyncWriter::write(const SyncRun& run) {
  const auto container = containerOf(run.container);
  file_.statement(Sql::InsertSyncRun)
      .bind(1, container)
      .bind(2, run.start)
      .bind(3, run.end)
      .bindBlob(4, run.counts)
      .bindText(5, run.outcome)
      .run();
  file_.statement(Sql::DeleteOldSyncRuns).bind(1, container).bind(2, kKeptRuns).run();
}

}  // namespace ox
