#include "tests/platform/store/synced_account.hpp"

#include <utility>

#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/journal/store_journal.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "ox/records/fingerprint.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::support {

SyncLogin syncLogin(const std::string& name) {
  SyncLogin login;
  login.name = name;
  login.url = "https://example.org/" + name;
  return login;
}

SyncBook syncBook(const std::string& container) {
  SyncBook book;
  book.container = container;
  book.url = "https://example.org/ann/team/";
  book.token = "token-1";
  return book;
}

SyncCardChange syncCard(const std::string& record, std::uint64_t fingerprint) {
  SyncCardChange change;
  change.card.container = kTeam;
  change.card.record = RecordKey::of(record);
  change.card.href = "/ann/team/" + record + ".vcf";
  change.card.path = change.card.href;
  change.card.etag = "\"" + record + "-1\"";
  change.card.uid = "uid-of-" + record;
  change.card.fingerprint = fingerprint;
  change.texts = SyncCard::Texts{"text of " + record, "agreed", "tags", "members"};
  return change;
}

NewRecord syncPerson(const std::string& id, const std::string& first) {
  PropertyBag values;
  values.set(property_id::kFirst, Object(first));
  return {RecordKey::of(id), RecordKind::Person, kTeam, std::move(values), nullptr};
}

void SyncedAccount::SetUp() {
  SaveRequest request;
  request.newContainers.push_back({kTeam, "Team", 3});
  request.sync.logins.push_back(syncLogin("work"));
  request.sync.books.push_back({syncBook(kTeam), "work"});
  for (const auto* id : {"ann", "ben"}) {
    request.additions.push_back(syncPerson(id, id));
    const auto fingerprint = contentFingerprint(request.additions.back().properties, nullptr);
    request.sync.cards.push_back(syncCard(id, fingerprint));
  }
  ASSERT_TRUE(source->execute(request)) << request.reason;
}

std::string SyncedAccount::storePath() {
  return StoreEnvironment::instance().contactStore().string();
}

bool SyncedAccount::execute(SyncRows rows) {
  SaveRequest request;
  request.sync = std::move(rows);
  const bool isDone = source->execute(request);
  reason = request.reason;
  return isDone;
}

void SyncedAccount::edit(const std::string& id, const char* note) {
  source->setValue(key(id), RecordKind::Person, property_id::kNote, Object(note));
  ASSERT_TRUE(source->save().done);
}

void SyncedAccount::remove(const std::string& id) {
  source->remove(key(id), RecordKind::Person);
  ASSERT_TRUE(source->save().done);
}

std::uint64_t SyncedAccount::fingerprintNow(const std::string& id) {
  return contentFingerprint(*source->committedValues(key(id)), source->committedImage(key(id)));
}

Text SyncedAccount::firstName(const std::string& id) {
  const auto* name = source->committedValues(key(id))->text(property_id::kFirst);
  return name != nullptr ? Text(*name) : std::nullopt;
}

std::vector<std::string> SyncedAccount::changes() {
  std::vector<std::string> texts;
  for (const auto& [card, now] : sync.changedSyncCards(kTeam)) {
    texts.push_back(card.href.substr(card.href.rfind('/') + 1) + (now ? " changed" : " gone"));
  }
  return texts;
}

std::vector<std::string> SyncedAccount::problems() {
  return storeProblems(storePath());
}

std::int64_t SyncedAccount::count(const std::string& table) {
  sqlite::Connection file(storePath(), sqlite::Connection::Mode::ReadOnly);
  return file.queryInteger(("SELECT count(*) FROM " + table).c_str());
}

bool SyncedAccount::undo() {
  return source->journal().takeBack(std::nullopt, StoreJournal::Last::Command).done;
}

}  // namespace ox::support
