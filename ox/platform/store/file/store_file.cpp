#include "ox/platform/store/file/store_file.hpp"

#include <algorithm>
#include <cassert>
#include <utility>

#include "ox/base/clock.hpp"
#include "ox/platform/store/file/stored_rows.hpp"
#include "ox/platform/store/process_origin.hpp"
#include "ox/platform/store/schema/noted_act.hpp"
#include "ox/platform/store/schema/tables.hpp"

namespace ox {

StoreFile::~StoreFile() {
  close();
  statements_.clear();  // a statement must go before its connection does
}

sqlite::Connection& StoreFile::connection() {
  if (store_.isOpen()) return store_.file();
  auto opened = openStoreFile(address_.file());
  auto rows = opened.file().prepare(sqlOf(Sql::CustomProperties));
  while (rows.step()) {
    // The values of it name its type themselves; only whoever writes one has to know this row.
    if (rows.integer(2) == 0) continue;
    const auto type = static_cast<ABPropertyType>(rows.integer(1));
    const auto id = property_table::addStored(rows.text(0), type);
    if (id != 0) writtenCustomProperties_.insert(id);
  }
  // Only now does the file count as open: had the properties not been read, the next try would have
  // to read them, since values in it may be of these properties.
  store_ = std::move(opened);
  return store_.file();
}

sqlite::Statement& StoreFile::statement(Sql which) {
  assert(which < Sql::Count);
  if (statements_.empty()) statements_.resize(static_cast<std::size_t>(Sql::Count));
  auto& prepared = statements_[static_cast<std::size_t>(which)];
  if (!prepared) prepared = connection().prepare(sqlOf(which));
  return prepared;
}

void StoreFile::keepPagesFor(std::size_t records) {
  constexpr std::size_t kMany = 1000;
  if (keepsManyPages_ || records < kMany) return;
  connection().execute("PRAGMA cache_size=-65536");
  keepsManyPages_ = true;
}

void StoreFile::letCommits(Outlive outlive) {
  if (outlive == outlive_) return;
  connection().execute(outlive == Outlive::PowerCut ? "PRAGMA synchronous=FULL"
                                                    : "PRAGMA synchronous=NORMAL");
  outlive_ = outlive;
}

void StoreFile::noteCommit(const StoreMoment& act, Commit commit) {
  originIsCommitted_ = true;
  // The log is one file: a commit that waited for the disk has taken along every commit before it.
  // Of one that was only found nobody knows whether the disk has it.
  unsynced_ = outlive_ == Outlive::Kill || commit == Commit::Found;
  notAnchored_.reset();
  if (commit == Commit::Found) return;
  notAnchored_ = act;
  if (!unsynced_) anchorLastAct();
}

// A note of an act that the store lacks stays: whoever checks is to be told of it, however many
// acts have come since. That is looked at once, since from then on this process keeps the log in
// being.
void StoreFile::anchorLastAct() noexcept {
  // What is read in a pinned moment may be older than what another process has noted.
  if (!notAnchored_ || store_.file().isInTransaction()) return;
  try {
    const auto act = *std::exchange(notAnchored_, std::nullopt);
    if (!anchored_) {
      const auto noted = store_.anchor().read();
      if (noted && stateOf(*noted, store_.file()) == NotedAct::IsMissing) return;
      SyncedAct first;
      const auto store = nameOfStore(*this);
      if (store.size() != first.store.size()) return;
      std::ranges::copy(store, first.store.begin());
      anchored_ = first;
    }
    anchored_->moment = act;
    anchored_->at = millisecondsNow();
    store_.anchor().write(*anchored_);
  } catch (const std::exception&) {
    // The next one is noted.
  }
}

bool StoreFile::isWritten(const StoreMoment& since, const Uuid& name) {
  try {
    auto& act = statement(Sql::ActByName);
    const sqlite::StatementScope scope(act);
    act.bind(1, since.number)
        .bindBlob(2, {reinterpret_cast<const char*>(name.data()), name.size()});
    return act.step();
  } catch (const sqlite::Error&) {
    return false;
  }
}

void StoreFile::coverFailedCommit() {
  try {
    letCommits(Outlive::Kill);
    sqlite::Transaction transaction(connection());
    // The version written anew, so that there is something to commit.
    connection().execute(("PRAGMA user_version=" + std::to_string(kSchemaVersion)).c_str());
    transaction.commit();
  } catch (const sqlite::Error&) {
    // Nothing can be written any more.
  }
}

void StoreFile::sync() {
  if (!unsynced_) return;
  assert(store_.isOpen());
  syncWriteAheadLog(store_.file());
  unsynced_ = false;
  anchorLastAct();
}

void StoreFile::checkpoint() {
  guarded([&] {
    auto& file = connection();
    syncWriteAheadLog(file);
    unsynced_ = false;
    anchorLastAct();
    file.execute("PRAGMA synchronous=FULL");
    outlive_ = Outlive::PowerCut;
    try {
      file.queryInteger("PRAGMA wal_checkpoint(TRUNCATE)");
    } catch (const sqlite::Error&) {
      // There is no room, or a reader is in the way. What was committed stays in the log, where it
      // is as safe, and SQLite tries again by itself.
    }
  });
}

void StoreFile::close() {
  if (!store_.isOpenHere()) return;
  statements_.clear();
  store_.close();
  anchored_.reset();
  notAnchored_.reset();
  outlive_ = Outlive::Kill;  // that of a new connection
  keepsManyPages_ = false;
  unsynced_ = false;
}

ABPropertyType StoreFile::storedType(std::string_view custom) {
  return guarded([&] {
    auto& row = statement(Sql::CustomPropertyType);
    const sqlite::StatementScope scope(row);
    row.bindText(1, custom);
    if (!row.step()) return kABErrorInProperty;
    requireSound(row, 1, "the row of a custom property");
    return static_cast<ABPropertyType>(row.integer(0));
  });
}

std::string StoreFile::refusalOf(PropertyId property) {
  if (property < kFirstCustomProperty || writtenCustomProperties_.contains(property)) return {};
  const auto name = property_table::nameOf(property);
  const auto stored = storedType(name);
  if (stored == kABErrorInProperty || stored == property_table::typeOf(property)) return {};
  return "the store knows the property " + name + " with another type";
}

void StoreFile::writeCustomProperties(std::span<const PropertyId> properties) {
  for (const auto property : properties) {
    if (writtenCustomProperties_.contains(property)) continue;
    if (const auto refusal = refusalOf(property); !refusal.empty()) {
      throw PropertyOfTwoTypes(refusal);
    }
    statement(Sql::InsertCustomProperty)
        .bindText(1, property_table::nameOf(property))
        .bind(2, property_table::typeOf(property))
        .run();
    writtenCustomProperties_.insert(property);
  }
}

bool StoreFile::isOrigin(std::int64_t row) {
  auto& origin = statement(Sql::OriginByRow);
  const sqlite::StatementScope scope(origin);
  origin.bind(1, row);
  return origin.step();
}

std::int64_t StoreFile::originRow(const std::optional<Origin>& origin, std::int64_t act) {
  const auto wanted = origin ? *origin : processOrigin();
  // One that nobody has used for long may be gone with the acts that bore it.
  // Whatever takes a command back has an origin of its own, for that is taken back alone.
  if (!wanted.undoes && writtenOrigin_ == wanted && isOrigin(originRow_)) return originRow_;
  auto& insert = statement(Sql::InsertOrigin);
  insert.bindText(1, wanted.program).bindText(2, wanted.command).bind(3, wanted.together ? 1 : 0);
  if (wanted.undoes) {
    insert.bind(4, *wanted.undoes);
  } else {
    insert.bindNull(4);
  }
  insert.bind(5, act).run();
  originRow_ = connection().lastRowId();
  writtenOrigin_ = wanted;
  originIsCommitted_ = false;
  return originRow_;
}

void StoreFile::forgetUncommitted() {
  writtenCustomProperties_.clear();
  // One that an earlier act has committed stays: acts of one command bear one origin.
  if (!originIsCommitted_) writtenOrigin_.reset();
}

}  // namespace ox
