// The power goes at any moment of a day's work. What the disk then holds is put together from the
// recorded changes and opened as the product would open it the next day.
#include <algorithm>
#include <array>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <set>

#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/OxAddressBookSDK/tags/tag_file.hpp"
#include "ox/OxMacAddressBookSDK/admin/accounts.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/transfer/importer.hpp"
#include "tests/faults/faulty_disk.hpp"
#include "tests/faults/store_state.hpp"
#include "tests/faults/trouble.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::faults {
namespace {

constexpr std::size_t kStride = 2;  // of the moments that are not beside a sync

std::string tagState(const std::string& path) {
  std::string text;
  if (!std::filesystem::exists(path)) return text;
  for (const auto& tag : TagFile(path).tags("book", "p")) text += tag + ' ';
  return text;
}

// What one of the two files held at the end of each transaction, in order.
class History {
 public:
  explicit History(std::string first) : moments_{{0, std::move(first), true}} {}

  void note(std::string state, bool promised) {
    moments_.push_back({FaultyDisk::shared().log().size(), std::move(state), promised});
  }

  // Whether the state is one that a power cut after that many events may leave: not older than what
  // was promised, not younger than the transaction under way. When no change is lost, as when only
  // the process is killed, every transaction that has ended is there.
  bool allows(const std::string& state, std::size_t events, Loss loss) const {
    const auto underWay = std::find_if(moments_.begin(), moments_.end(),
                                       [&](const auto& moment) { return moment.events > events; });
    auto oldest = underWay;
    while (loss != Loss::Nothing && !std::prev(oldest)->promised) --oldest;
    return std::any_of(std::prev(oldest), underWay == moments_.end() ? underWay : underWay + 1,
                       [&](const auto& moment) { return moment.state == state; });
  }

 private:
  struct Moment {
    std::size_t events;
    std::string state;
    bool promised;
  };
  std::vector<Moment> moments_;
};

std::shared_ptr<ABAddressBook> book() {
  return ABAddressBook::sharedAddressBook();
}

void setFirstName(const std::string& id, const std::string& name) {
  ASSERT_TRUE(
      book()->recordForUniqueId(id)->setValue_forProperty(Object(name), kABFirstNameProperty));
}

// What the script below does to the store, and what it may count on afterwards.
class Day {
 public:
  Day() : store_(kEmptyStore), tags_("") {}

  void creation(const std::function<void()>& work) {
    work();
    store_.note(committedState(storePath()), false);
  }
  void save() {
    ASSERT_TRUE(book()->save());
    store_.note(committedState(storePath()), true);
  }
  void run(SaveRequest request) {
    request.outlivesPowerCut = true;
    ASSERT_TRUE(contactSource().execute(request)) << request.reason;
    store_.note(committedState(storePath()), true);
  }
  void import(const std::string& cards) {
    const auto path = support::temporaryFile("day.vcf", cards).string();
    vcard::ImportOptions options;
    options.progress = [&](auto, auto) { store_.note(committedState(storePath()), false); };
    ASSERT_EQ(vcard::importFiles({path}, "_local", options).failure, "");
    store_.note(committedState(storePath()), true);
  }
  void tag(const std::string& tag) {
    OxTagManager::tagManagerWithID("book")->addPersonID_forTag("p", tag);
    tags_.note(tagState(tagPath()), false);
  }
  void makeTagsDurable() {
    ASSERT_TRUE(OxTagManager::makeDurable());
    tags_.note(tagState(tagPath()), true);
  }

  static std::string tagPath() { return support::StoreEnvironment::instance().tagStore().string(); }
  const History& store() const { return store_; }
  const History& tags() const { return tags_; }

 private:
  static constexpr const char* kEmptyStore = "_local:ABAccount On My Mac 1\n";

  History store_;
  History tags_;
};

std::string card(const std::string& uid, const std::string& lines) {
  return "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:" + uid + "\r\nN:" + uid + "\r\nUID:" + uid + "\r\n" +
         lines + "END:VCARD\r\n";
}

// A run of an account that is in step with a book: its first person, and what is agreed of him.
SaveRequest runWith(const std::string& id) {
  SaveRequest request;
  request.additions.push_back({RecordKey::of(id), RecordKind::Person, "c:ABAccount", {}, nullptr});
  SyncBook book;
  book.container = "c:ABAccount";
  book.token = "after " + id;
  if (syncSource().syncLogins().empty()) {
    SyncLogin login;
    login.name = "work";
    request.sync.logins.push_back(login);
  }
  request.sync.books.push_back({book, "work"});
  SyncCardChange card;
  card.card.container = book.container;
  card.card.record = RecordKey::of(id);
  card.card.path = "/book/" + id;
  card.texts = SyncCard::Texts{std::string(6'000, 't'), "agreed", "", ""};
  request.sync.cards.push_back(card);
  return request;
}

void live(Day& day) {
  using support::StoreBuilder;
  day.creation([] { StoreBuilder().person("ann", {.first = "Ann"}); });
  day.creation([] { StoreBuilder().persons("p", 20); });
  day.tag("work");
  day.save();  // nothing unsaved: the creations
  day.creation([] { StoreBuilder().group("friends", "Friends"); });
  day.creation([] { StoreBuilder().member("friends", "p3"); });
  day.makeTagsDurable();
  setFirstName("ann", "Anna");
  ASSERT_TRUE(std::dynamic_pointer_cast<ABPerson>(book()->recordForUniqueId("p1"))
                  ->setImageData(makeData(std::string(30'000, 'i'))));
  ASSERT_TRUE(book()->removeRecord(book()->recordForUniqueId("p19")));
  day.save();
  day.tag("sailing");
  day.import(card("one", "NOTE:" + std::string(9'000, 'n') + "\r\n") + card("two", "") +
             card("club",
                  "X-ADDRESSBOOKSERVER-KIND:group\r\nX-ADDRESSBOOKSERVER-MEMBER:"
                  "urn:uuid:one\r\n"));
  day.creation([] { StoreBuilder().container("c:ABAccount", "Work", 3); });
  day.creation([] { StoreBuilder().in("c:ABAccount").person("colleague"); });
  setFirstName("colleague", "Cid");
  day.save();
  day.run(runWith("boss"));
  ASSERT_TRUE(book()->removeRecord(book()->recordForUniqueId("boss")));
  day.save();
  day.run(runWith("clerk"));
  day.tag("chess");
  day.makeTagsDurable();
  day.import(card("three", ""));
  day.creation([] { StoreBuilder().person("last"); });
  ASSERT_TRUE(book()->removeRecord(book()->recordForUniqueId("ann")));
  day.save();
}

std::filesystem::path emptyFolder() {
  auto folder = support::temporaryPath("cut");
  std::filesystem::remove_all(folder);
  std::filesystem::create_directory(folder);
  return folder;
}

// No row number was ever given that the counter would give again.
bool countsOn(const std::string& path) {
  sqlite::Connection store(path, sqlite::Connection::Mode::ReadOnly);
  return store.queryInteger(
             "SELECT max(next_record) > max(ifnull((SELECT max(id) FROM record), 0),"
             " ifnull((SELECT max(record) FROM change WHERE what = 3), 0)) FROM act") == 1;
}

// The next day begins on what the power cut left.
void expectWholeStore(const std::filesystem::path& folder, const Day& day, std::size_t events,
                      Loss loss) {
  const auto path = (folder / "contacts.db").string();
  const auto source = openStoreSource(path);
  const auto state = stateOf(*source);
  EXPECT_TRUE(day.store().allows(state, events, loss)) << state;
  EXPECT_TRUE(countsOn(path));
  support::StoreBuilder(*source).person("after");
  EXPECT_TRUE(source->setValue(RecordKey::of("after"), RecordKind::Person, property_id::kFirst,
                               Object("After")));
  EXPECT_TRUE(source->save().done);
  EXPECT_EQ(source->records(RecordKind::Person).back(), RecordKey::of("after"));
  EXPECT_TRUE(countsOn(path));
  EXPECT_EQ(problemsOf(path), "");

  const auto tagPath = (folder / "tags.db").string();
  const auto tags = tagState(tagPath);
  EXPECT_TRUE(day.tags().allows(tags, events, loss)) << tags;
  if (!std::filesystem::exists(tagPath)) return;
  EXPECT_EQ(TagFile(tagPath).problems(), TagFile::Tags());
}

TEST(PowerCut, AtAnyMomentLosesNothingThatWasPromised) {
  auto& disk = FaultyDisk::shared();
  disk.record(support::StoreEnvironment::instance().folder().string());
  Day day;
  live(day);
  disk.stopRecording();
  ASSERT_FALSE(HasFailure());
  const auto& log = disk.log();
  DiskReplay replay(log);
  std::size_t looked = 0;
  for (std::size_t events = 0; events <= log.size(); ++events) {
    const auto isSync = [&](std::size_t i) {
      return i < log.size() && log[i].kind == Event::Kind::Sync;
    };
    const bool beside = isSync(events) || (events > 0 && isSync(events - 1));
    if (!beside && events % kStride != 0 && events != log.size()) continue;
    replay.advanceTo(events);
    for (const auto loss : {Loss::All, Loss::Nothing, Loss::Tail, Loss::Chance}) {
      SCOPED_TRACE("after " + std::to_string(events) + " events, loss " +
                   std::to_string(static_cast<int>(loss)));
      const auto folder = emptyFolder();
      replay.writeInto(folder, loss, static_cast<std::uint32_t>(events));
      expectWholeStore(folder, day, events, loss);
      ++looked;
      ASSERT_FALSE(HasFailure());
    }
  }
  EXPECT_GT(looked, 500U);
}

// What the store holds when the power goes now and takes everything with it that was not synced.
std::string stateAfterCutNow(const std::string& name) {
  FaultyDisk::shared().stopRecording();
  DiskReplay replay(FaultyDisk::shared().log());
  replay.advanceTo(FaultyDisk::shared().log().size());
  const auto folder = emptyFolder();
  replay.writeInto(folder, Loss::All, 1);
  return committedState((folder / name).string());
}

// Another program removed the only record that had unsaved changes. The save then had nothing to
// write, waited for no disk and left this process's creations where a power cut takes them.
TEST(PowerCut, AfterASaveThatHadNothingLeftToWriteKeepsTheCreations) {
  FaultyDisk::shared().record(support::StoreEnvironment::instance().folder().string());
  support::StoreBuilder().person("overtaken");
  setFirstName("overtaken", "Ann");
  const auto other = openStoreSource(storePath());
  ASSERT_TRUE(other->remove(RecordKey::of("overtaken"), RecordKind::Person));
  ASSERT_TRUE(other->save().done);
  support::StoreBuilder().person("created");
  const auto report = book()->saveAndReturnError();
  EXPECT_TRUE(report.done);
  EXPECT_EQ(report.dropped.size(), 1U);
  const auto state = committedState(storePath());
  EXPECT_NE(state.find("created"), std::string::npos);
  EXPECT_EQ(stateAfterCutNow("contacts.db"), state);
}

// What an import had committed before it failed was counted, but never waited for.
TEST(PowerCut, AfterAnImportThatFailedKeepsWhatItCounted) {
  auto& disk = FaultyDisk::shared();
  disk.record(support::StoreEnvironment::instance().folder().string());
  const auto first = support::temporaryFile("first.vcf", card("one", "")).string();
  const auto second = support::temporaryFile("second.vcf", card("two", "")).string();
  vcard::ImportOptions options;
  options.progress = [&](auto, auto) { disk.failAt(1, Fault::Full); };
  const auto report = vcard::importFiles({first, second}, "_local", options);
  EXPECT_TRUE(disk.mend());
  EXPECT_EQ(report.failure, storePath() + ": database or disk is full");
  EXPECT_EQ(report.added, 1U);
  const auto state = committedState(storePath());
  EXPECT_NE(state.find(":ABPerson"), std::string::npos);
  EXPECT_EQ(stateAfterCutNow("contacts.db"), state);
}

// The tags went to the disk before the act that they followed, which a power cut then took alone:
// whoever was still there had lost them.
TEST(PowerCut, TakesNoTagsOfAnAccountThatIsStillThere) {
  auto& disk = FaultyDisk::shared();
  disk.record(support::StoreEnvironment::instance().folder().string());
  support::StoreBuilder().container("c:ABAccount", "Work", 3).in("c:ABAccount").person("cid");
  OxTagManager::tagManagerWithID("c")->addPersonID_forTag("cid", "night");
  ASSERT_TRUE(book()->save());
  ASSERT_TRUE(OxTagManager::makeDurable());
  const auto before = disk.log().size();
  ASSERT_TRUE(removeAccount("c:ABAccount", WithRecords::Yes));
  disk.stopRecording();
  DiskReplay replay(disk.log());
  int without = 0;
  for (auto events = before; events <= disk.log().size(); ++events) {
    replay.advanceTo(events);
    const auto folder = emptyFolder();
    replay.writeInto(folder, Loss::All, 1);
    const bool isThere =
        committedState((folder / "contacts.db").string()).find("cid") != std::string::npos;
    const auto tags = TagFile((folder / "tags.db").string()).tags("c", "cid");
    EXPECT_TRUE(!isThere || tags == TagFile::Tags{"night"}) << "after " << events - before;
    without += isThere ? 0 : 1;
  }
  EXPECT_GT(without, 0);
}

// The file was synced, and its name, but not the names of the folders made for it.
TEST(PowerCut, AfterAStoreWasMadeKeepsItsNewFolders) {
  auto& disk = FaultyDisk::shared();
  const auto top = support::StoreEnvironment::instance().folder().string();
  openStoreSource(top + "/a/b/contacts.db")->containers();
  EXPECT_EQ(disk.syncedFolders(), std::set<std::string>({top, top + "/a", top + "/a/b"}));
}

// SQLite keeps the log of a store that is reached through a link beside the file itself. It was
// looked for beside the link, found missing, and taken for synced.
TEST(PowerCut, AfterASaveThroughALinkKeepsTheCreations) {
  const auto folder = support::temporaryPath("real");
  std::filesystem::create_directory(folder);
  const auto link = support::temporaryPath("link.db");
  std::filesystem::create_symlink(support::temporaryFile("real/store.db", ""), link);
  FaultyDisk::shared().record(folder.string());
  const auto source = openStoreSource(link.string());
  support::StoreBuilder(*source).person("created");
  ASSERT_TRUE(source->save().done);
  EXPECT_EQ(stateAfterCutNow("store.db"), stateOf(*source));
}

}  // namespace
}  // namespace ox::faults
