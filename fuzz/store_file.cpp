// Contact stores: made of the bytes of an input, a sound one with some bytes of it or of its log
// changed, or one of this version or an earlier with rows that the input tells, with sums that fit.
// Refused, or read from end to end without anything but a failure that is told; what `check` calls
// sound can be read, and stays sound when something is taken back.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <set>
#include <span>

#include "fuzz/changed_rows.hpp"
#include "fuzz/input.hpp"
#include "fuzz/lean_sqlite.hpp"
#include "fuzz/require.hpp"
#include "fuzz/scratch_file.hpp"
#include "ox/base/checksum.hpp"
#include "ox/base/failures.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "ox/base/sqlite/log_pages.hpp"
#include "ox/platform/store/committed/act_builder.hpp"
#include "ox/platform/store/journal/store_journal.hpp"
#include "ox/platform/store/schema/sync_anchor.hpp"
#include "ox/platform/store/schema/tables.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "ox/records/damaged_bytes.hpp"
#include "ox/vcard/write/writer.hpp"

namespace {

using namespace ox;

// A store with something of everything in it, whose last acts stand in the log.
struct Sound {
  std::string bytes;
  std::string log;

  Sound() {
    const auto path = fuzz::scratchPath("made.db");
    fuzz::writeDatabase(path, {});
    std::filesystem::remove(path);
    const auto source = openStoreSource(path);
    addRecords(*source);
    edit(*source);
    synchronise(*source);
    source->checkpoint();
    const auto person = RecordKey::of("ann");
    source->setValue(person, RecordKind::Person, property_id::kNote, Object("in the log"));
    source->save();
    bytes = fuzz::readScratch(path);
    log = fuzz::readScratch(path + "-wal");
  }

  static const Sound& shared() {
    static const Sound sound;
    return sound;
  }

 private:
  static void addRecords(ContactSource& source) {
    SaveRequest request;
    request.newContainers.push_back({"A:ABAccount", "Cloud", 3});
    const auto add = [&](const char* id, RecordKind kind, PropertyId name, const char* container) {
      NewRecord record{RecordKey::of(id), kind, container, {}, {}};
      record.properties.set(name, Object(id));
      if (*id == 'a') record.properties.set(property_id::kCardUid, Object("card"));
      if (*id == 'a') record.image = makeData("a picture");
      request.additions.push_back(std::move(record));
    };
    constexpr auto kLocal = "_local:ABAccount";
    add("ann", RecordKind::Person, property_id::kFirst, kLocal);
    add("ben", RecordKind::Person, property_id::kFirst, kLocal);
    add("cid", RecordKind::Person, property_id::kFirst, "A:ABAccount");
    add("friends", RecordKind::Group, property_id::kGroupName, kLocal);
    add("chess", RecordKind::Group, property_id::kGroupName, kLocal);
    const auto friends = RecordKey::of("friends");
    for (const auto* id : {"ann", "ben", "chess"}) {
      request.links.push_back({friends, RecordKey::of(id)});
    }
    fuzz::require(source.execute(request));
  }

  static void edit(ContactSource& source) {
    const auto ann = RecordKey::of("ann");
    source.setValue(ann, RecordKind::Person, property_id::kFirst, Object("Anna"));
    source.setImageData(ann, makeData("another picture"));
    fuzz::require(source.save({{"_local", "ann", {}, {"red"}}}).done);
    source.remove(RecordKey::of("ben"), RecordKind::Person);
    fuzz::require(source.save().done);
    source.setValue(ann, RecordKind::Person, property_id::kNote, Object("taken back"));
    fuzz::require(source.save().done);
    fuzz::require(source.journal().takeBack(std::nullopt, StoreJournal::Last::Command).done);
    source.journal().setBounds({36500, 1 << 20});
  }

  static void synchronise(ContactSource& source) {
    SaveRequest request;
    SyncLogin login;
    login.name = "work";
    request.sync.logins.push_back(login);
    SyncBook book;
    book.container = "A:ABAccount";
    request.sync.books.push_back({book, "work"});
    for (const auto* path : {"/cid", "/gone"}) {
      SyncCardChange card;
      card.card.container = book.container;
      card.card.path = path;
      if (*(path + 1) == 'c') card.card.record = RecordKey::of("cid");
      request.sync.cards.push_back(card);
    }
    request.sync.conflicts.push_back({0, book.container, "/cid", "Note", "t", "o", "b", 1});
    request.sync.runs.push_back({book.container, 1, 2, "counts", ""});
    fuzz::require(source.execute(request));
  }
};

// One store for all runs, which is as the sound one when a run begins. A source follows what is
// changed under it, so nothing has to be opened anew.
class Rows {
 public:
  explicit Rows(const Sound& sound) : path_(fuzz::scratchPath("rows.db")) {
    const auto soundPath = fuzz::scratchPath("sound.db");
    fuzz::writeDatabase(soundPath, sound.bytes, sound.log);
    fuzz::writeDatabase(path_, sound.bytes, sound.log);
    database_ = sqlite::Connection(path_, sqlite::Connection::Mode::ReadWrite);
    database_.execute(("ATTACH '" + soundPath + "' AS sound").c_str());
    database_.execute("PRAGMA synchronous=OFF; PRAGMA wal_autocheckpoint=64");
    changes_.emplace(database_, fuzz::tablesOf(kSchemaVersion));
    for (const auto& table : fuzz::tablesOf(kSchemaVersion)) {
      const std::string name = table.name;
      const std::string columns = table.columns;
      if (name == "act") acts_ = restore_.size();
      restore_.emplace_back(database_.prepare("DELETE FROM main." + name),
                            database_.prepare("INSERT INTO main." + name + "(" + columns +
                                              ") SELECT " + columns + " FROM sound." + name));
    }
    source_ = openStoreSource(path_);
  }

  const std::string& path() const { return path_; }
  ContactSource& source() { return *source_; }
  // To be called when others than change() have written.
  void noteChanges() {
    for (std::size_t i = 0; i < restore_.size(); ++i) changed_.insert(i);
  }

  // Whether this run, or what it began with, has taken acts out of the journal or changed them. A
  // source believes that its past stays as it is: where the run before took away the last act and
  // this one put it back, what was remembered between them was never told to be wrong.
  bool isPastChanged() const { return isPastChanged_; }

  void change(fuzz::Input& input) {
    isPastChanged_ = changed_.contains(acts_);
    sqlite::Transaction transaction(database_);
    for (const auto which : changed_) {
      restore_[which].first.run();
      restore_[which].second.run();
    }
    changed_.clear();
    while (!input.isEmpty()) changed_.insert(changes_->changeOne(input));
    isPastChanged_ = isPastChanged_ || changed_.contains(acts_);
    transaction.commit();
  }

 private:
  std::string path_;
  sqlite::Connection database_;
  std::vector<std::pair<sqlite::Statement, sqlite::Statement>> restore_;  // by table
  std::set<std::size_t> changed_;  // the tables; no change of one reaches another
  std::size_t acts_ = 0;           // one of them
  bool isPastChanged_ = false;
  std::optional<fuzz::RowChanges> changes_;
  std::shared_ptr<ContactSource> source_;
};

// As an export asks for them.
void readRecords(ContactSource& source) {
  std::string card;
  const auto write = [&](const RecordKeys& keys, const auto& append) {
    constexpr std::size_t kBytes = 4096;
    for (std::span rest(keys); !rest.empty();) {
      const auto contents = source.committedContents(rest, kBytes);
      fuzz::require(!contents.empty() && contents.size() <= rest.size());
      for (const auto& content : contents) {
        card.clear();
        if (content.values) append(content);
      }
      rest = rest.subspan(contents.size());
    }
  };
  const vcard::WriteOptions options{.version = vcard::CardVersion::V40, .uid = "uid"};
  for (const auto& container : source.containers()) {
    const auto& id = container->identifier;
    write(source.recordsIn(id, RecordKind::Person), [&](const RecordContent& content) {
      vcard::appendCard(*content.values, content.picture, options, card);
    });
    const auto groups = source.recordsIn(id, RecordKind::Group);
    write(groups, [&](const RecordContent& content) {
      vcard::appendGroup(*content.values, {}, options, card);
    });
    source.committedChildren(groups, RecordKind::Person);
    source.committedChildren(groups, RecordKind::Group);
    for (const auto& group : groups) source.parents(group);
    for (const auto& person : source.recordsIn(id, RecordKind::Person)) {
      source.parents(person);
      source.committedImage(person);
    }
  }
}

void readSync(ContactSource& source) {
  auto& sync = source.sync();
  sync.syncLogins();
  sync.syncBooks();
  sync.syncConflicts();
  for (const auto& container : source.containers()) {
    const auto& id = container->identifier;
    std::vector<std::int64_t> ids;
    for (const auto& card : sync.syncCards(id)) ids.push_back(card.card.id);
    fuzz::require(sync.countSyncCards(id) == ids.size());
    fuzz::require(sync.changedSyncCards(id).size() <= ids.size());
    sync.syncCardTexts(ids);
    sync.recordsWithoutCard(id);
    sync.syncRuns(id, 3);
  }
}

void readJournal(ContactSource& source) {
  auto& journal = source.journal();
  journal.commands(100);
  journal.bounds();
  source.tagDebts();
  for (const auto& removed : journal.removedRecords(100)) {
    journal.historyOf(removed.record.key, 100);
  }
  journal.historyOf(RecordKey::of("ann"), 100);
  journal.recordAt(RecordKey::of("ann"), 0);
  auto part = journal.read({}, 3);
  for (int parts = 0; parts < 30 && !part.changes.empty(); ++parts)
    part = journal.read(part.next, 3);
}

bool isSound(const std::string& path) {
  // The check would look again and again whether somebody is just writing it.
  const sqlite::LogPages log(path + "-wal");
  if (log.isHeadDamaged() || log.damagedPages() > 0) return false;
  return storeProblems(path).empty();
}

// Why something could not be read: what is found depends on the runs before it at times, and is not
// shown by its input alone.
std::string& lastReason() {
  static std::string reason;
  return reason;
}

// Whether it could be read; a request may be refused as well.
template <typename Read>
bool tryReading(Read read) {
  try {
    read();
    return true;
  } catch (const FailureError& error) {
    lastReason() = error.what();
  } catch (const DamagedBytes& error) {
    lastReason() = error.what();
  } catch (const RefusedRequest& error) {
    lastReason() = error.what();
  }
  return false;
}

void requireReadable(bool isReadable) {
  if (!isReadable) std::fprintf(stderr, "sound, and not read: %s\n", lastReason().c_str());
  fuzz::require(isReadable);
}

enum class What : std::uint8_t { All, Journal, Records, WayBack };

// What takes longer is done less often, as the sum of an input tells: an input that was found shows
// it again, and the runs cannot come to prefer what takes long.
What whatToRead(std::uint64_t sum) {
  if (sum % 128 == 0) return What::All;
  if (sum % 128 == 2) return What::WayBack;
  return sum % 16 == 1 ? What::Journal : What::Records;
}

bool mayOpen(std::uint64_t sum) {
  return sum / 128 % 16 == 0;
}

bool isSoundNow(const std::string& path) {
  try {
    return isSound(path);
  } catch (const FailureError&) {
    return false;
  }
}

bool isReadable(ContactSource& source, What what) {
  const bool areRecordsRead = what == What::Journal || tryReading([&] {
                                readRecords(source);
                                readSync(source);
                              });
  const bool isJournalRead = what == What::Records || tryReading([&] { readJournal(source); });
  return areRecordsRead && isJournalRead;
}

// The store at that path, which is opened now.
void tryStore(const std::string& path, What what) {
  const bool isSound = what == What::All && isSoundNow(path);
  const auto source = openStoreSource(path);
  requireReadable(isReadable(*source, what) || !isSound);
}

// That of the rows.
void tryRows(Rows& rows, What what) {
  const bool isSound = what == What::All && isSoundNow(rows.path());
  if (isReadable(rows.source(), what) || !isSound) return;
  requireReadable(rows.isPastChanged() && isReadable(*openStoreSource(rows.path()), what));
}

// What is taken back, or brought back from a copy, leaves a sound store sound.
void tryWayBack(Rows& rows, std::uint64_t which) {
  static const auto copy = [] {
    auto path = fuzz::scratchPath("copy.db");
    fuzz::writeDatabase(path, Sound::shared().bytes, Sound::shared().log);
    return path;
  }();
  const bool wasSound = isSoundNow(rows.path());
  auto& journal = rows.source().journal();
  rows.noteChanges();
  tryReading([&] {
    switch (which % 3) {
      case 0:
        journal.returnToCopy(copy, {{"_local", "ann", {"red"}, {}}});
        break;
      case 1:
        journal.takeBack(static_cast<std::int64_t>(1 + which / 3 % 6), StoreJournal::Last::Command);
        break;
      default:
        journal.takeBack(std::nullopt, StoreJournal::Last::Command);
        journal.takeBack(std::nullopt, StoreJournal::Last::TakingBack);
    }
  });
  const bool isStillSound = !wasSound || isSoundNow(rows.path());
  if (!isStillSound) {
    for (const auto& problem : storeProblems(rows.path())) {
      std::fprintf(stderr, "was sound, and now: %s\n", problem.c_str());
    }
  }
  fuzz::require(isStillSound);
  // It tells of acts that the next run begins without.
  std::filesystem::remove(rows.path() + "-synced");
}

// What only the check looks at: whether a note of what was synced, an index or a count is missing,
// or the log is damaged, which it looks for again and again.
void tryCheck(const std::string& path, int form, std::uint64_t which) {
  try {
    {
      sqlite::Connection database(path, sqlite::Connection::Mode::ReadWrite);
      database.keepLog();
      if (which % 4 == 1) database.execute("DROP INDEX link_child; DROP INDEX origin_undoes");
      if (which % 4 == 2) database.execute("UPDATE sqlite_sequence SET seq = 0");
      if (which % 4 == 3) {
        auto name = database.prepare("SELECT name FROM store");
        SyncedAct act;
        if (name.step() && name.blob(0).size() == act.store.size()) {
          std::ranges::copy(name.blob(0), act.store.begin());
        }
        act.moment.number = static_cast<std::int64_t>(which / 4 % 16);
        act.at = static_cast<std::int64_t>(which << 16U);
        SyncAnchor(database).write(act);
      }
    }
    if (form != 2 || which % 64 == 0) storeProblems(path);
  } catch (const FailureError&) {
  }
}

void tryBytes(int form, fuzz::Input& input, What what, std::uint64_t which) {
  static const auto path = fuzz::scratchPath("contacts.db");
  std::filesystem::remove_all(path + ".copies");
  auto bytes = Sound::shared().bytes;
  auto log = Sound::shared().log;
  if (form == 0) {
    bytes = input.rest();
    log.clear();
  } else {
    fuzz::patch(form == 1 ? bytes : log, input);
  }
  fuzz::writeDatabase(path, bytes, log);
  if (which % 4 == 0) tryCheck(path, form, which / 4);
  tryStore(path, what);
}

// A store of an earlier version, which opening brings up to date.
void tryEarlier(fuzz::Input& input, What what) {
  static const auto path = fuzz::scratchPath("earlier.db");
  const auto version = 1 + input.byte() % (kSchemaVersion - 1);
  std::filesystem::remove_all(path + ".copies");
  fuzz::writeDatabase(path, fuzz::bytesOfVersion(version));
  {
    sqlite::Connection database(path, sqlite::Connection::Mode::ReadWrite);
    fuzz::RowChanges changes(database, fuzz::tablesOf(version));
    sqlite::Transaction transaction(database);
    while (!input.isEmpty()) changes.changeOne(input);
    transaction.commit();
  }
  tryStore(path, what);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  fuzz::makeSqliteLean();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const failures::Watch watch;
  fuzz::Input input(data, size);
  const auto sum = checksum64(input.rest());
  const auto what = whatToRead(sum);
  const auto form = input.byte() % 64;
  if (form < 3 && mayOpen(sum)) {
    tryBytes(form, input, what, sum / 2048);
  } else if (form < 8 && mayOpen(sum)) {
    tryEarlier(input, what == What::Journal ? what : What::All);
  } else {
    static Rows rows(Sound::shared());
    rows.change(input);
    if (what == What::WayBack) {
      tryWayBack(rows, sum / 128);
    } else {
      tryRows(rows, what);
    }
  }
  return 0;
}
