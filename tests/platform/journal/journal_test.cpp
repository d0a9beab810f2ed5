#include "ox/platform/journal/journal.hpp"

#include <gtest/gtest.h>

#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/process_origin.hpp"
#include "tests/support/second_process.hpp"
#include "tests/support/statement_count.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

using support::StoreBuilder;

const support::SecondProcess addsTwo("addsTwo", [](const auto&) {
  setOrigin({"other", "add two", false, std::nullopt});
  StoreBuilder().person("x1", {.first = "Xi"}).person("x2", {.first = "Yi"});
  return 0;
});

std::string wordOf(JournalChange::Kind kind) {
  switch (kind) {
    case JournalChange::Kind::Added:
      return "added";
    case JournalChange::Kind::Changed:
      return "changed";
    case JournalChange::Kind::Removed:
      return "removed";
    case JournalChange::Kind::Restored:
      return "restored";
    case JournalChange::Kind::Linked:
      return "linked";
    case JournalChange::Kind::Unlinked:
      return "unlinked";
    case JournalChange::Kind::AccountAdded:
      return "account added";
    case JournalChange::Kind::AccountRemoved:
      return "account removed";
    case JournalChange::Kind::Tagged:
      return "tagged";
  }
  return "?";
}

std::string restOf(journal::ChangesSince& changes) {
  std::string text;
  while (const auto change = changes.next()) {
    text += (text.empty() ? "" : ", ") + wordOf(change->kind) + " " +
            (change->record.isNone() ? change->account.name : change->record.text());
    if (!change->other.isNone()) text += " " + change->other.text();
  }
  return text;
}

// What a host does that keeps a copy of its own in step with the store.
TEST(ChangesSince, TellsAFollowerWhatHappenedByWhomever) {
  StoreBuilder().person("p", {.first = "Ann"});
  const auto before = journal::moment();
  StoreBuilder()
      .container("A:ABAccount", "iCloud", 3)
      .in("_local")
      .group("g", "Friends")
      .member("g", "p");
  ASSERT_EQ(addsTwo.run().exitCode, 0);
  journal::ChangesSince changes(before);
  EXPECT_EQ(restOf(changes), "account added iCloud, added g, linked g p, added x1, added x2");
  EXPECT_FALSE(changes.mustStartAnew());

  // Asked again it goes on, and so does another follower from the place where this one is.
  const auto place = changes.place();
  StoreBuilder().person("q", {.first = "Quinn"});
  EXPECT_EQ(restOf(changes), "added q");
  journal::ChangesSince later(place);
  const auto change = later.next();
  ASSERT_TRUE(change);
  EXPECT_EQ(change->record.text(), "q");
  EXPECT_FALSE(later.next());
}

TEST(ChangesSince, NamesTheCommandAndTheProgramOfEach) {
  const auto before = journal::moment();
  ASSERT_EQ(addsTwo.run().exitCode, 0);
  journal::ChangesSince changes(before);
  const auto change = changes.next();
  ASSERT_TRUE(change);
  EXPECT_EQ(change->origin, (Origin{"other", "add two", false, std::nullopt}));
  EXPECT_EQ(change->act, before.number + 1);
  EXPECT_EQ(change->command, before.number + 1);
}

TEST(ChangesSince, ReadsAnyNumberAPartAtATimeAndTellsEachOnce) {
  const auto before = journal::moment();
  StoreBuilder().persons("p", 1000).persons("q", 513).group("g", "Friends");
  journal::ChangesSince changes(before);
  std::size_t count = 0;
  JournalPlace middle;
  while (changes.next()) {
    if (++count == 700) middle = changes.place();
  }
  EXPECT_EQ(count, 1514U);
  journal::ChangesSince rest(middle);
  for (count = 0; rest.next();) ++count;
  EXPECT_EQ(count, 814U);
}

// What came into a group by one act is one row of the journal, and many changes for a follower.
TEST(ChangesSince, GoesOnBetweenLinksOfOneGroup) {
  StoreBuilder().persons("p", 700).group("g", "Friends");
  const auto before = journal::moment();
  SaveRequest request;
  for (const auto& person : contactSource().records(RecordKind::Person)) {
    request.links.push_back({RecordKey::of("g"), person});
  }
  ASSERT_TRUE(contactSource().execute(request)) << request.reason;
  StoreBuilder().person("last");
  journal::ChangesSince changes(before);
  std::vector<JournalPlace> places;
  std::vector<RecordKey> told;
  while (const auto change = changes.next()) {
    told.push_back(change->kind == JournalChange::Kind::Linked ? change->other : change->record);
    places.push_back(changes.place());
  }
  ASSERT_EQ(told.size(), 701U);
  for (const std::size_t place : {0U, 1U, 511U, 512U, 698U, 699U, 700U}) {
    journal::ChangesSince rest(places[place]);
    std::vector<RecordKey> others(told.begin(),
                                  told.begin() + static_cast<std::ptrdiff_t>(place) + 1);
    while (const auto change = rest.next()) {
      others.push_back(change->kind == JournalChange::Kind::Linked ? change->other
                                                                   : change->record);
    }
    EXPECT_EQ(others, told) << place;
  }
}

// A person comes into a group and is gone again; the result is what it costs a follower to be told.
std::uint64_t stepsToFollow(const std::string& id) {
  const auto before = journal::moment();
  StoreBuilder().person(id, {.first = "Ann"}).member("g", id);
  contactSource().remove(RecordKey::of(id), RecordKind::Person);
  EXPECT_TRUE(contactSource().save().done);
  journal::ChangesSince changes(before);
  const auto steps = support::stepsTaken();
  EXPECT_EQ(restOf(changes), "linked g " + id + ", unlinked g " + id + ", removed " + id);
  return support::stepsTaken() - steps;
}

TEST(ChangesSince, CostAFollowerTheSameHoweverLongTheJournalIs) {
  support::statementsRun();
  StoreBuilder().group("g", "Friends");
  stepsToFollow("first");
  const auto atFirst = stepsToFollow("second");
  StoreBuilder().persons("p", 2000);
  for (const auto& key : contactSource().records(RecordKind::Person)) {
    contactSource().remove(key, RecordKind::Person);
  }
  ASSERT_TRUE(contactSource().save().done);
  EXPECT_LT(stepsToFollow("third"), atFirst + atFirst / 2);
}

TEST(ChangesSince, SaysThatItMustStartAnewWhereThePastIsAnother) {
  StoreBuilder().person("p", {.first = "Ann"});
  auto moment = journal::moment();
  moment.name[3] ^= 1U;
  journal::ChangesSince other(moment);
  EXPECT_FALSE(other.next());
  EXPECT_TRUE(other.mustStartAnew());
  journal::ChangesSince none(StoreMoment{12345, {}});
  EXPECT_FALSE(none.next());
  EXPECT_TRUE(none.mustStartAnew());
}

TEST(JournalBounds, TrimTheOldestActsAsOthersAreWritten) {
  const auto first = journal::moment();
  journal::setBounds({90, 20'000});
  for (int i = 0; i < 300; ++i) {
    StoreBuilder().person("p" + std::to_string(i), {.first = "Ann"});
    // One that is removed leaves its values in the journal.
    SaveRequest request;
    const auto name = "A" + std::to_string(i) + ":ABAccount";
    StoreBuilder().container(name, "Account", 3).person("r" + std::to_string(i), {.first = "Rae"});
    request.removedContainers.push_back({name, true});
    ASSERT_TRUE(contactSource().execute(request)) << request.reason;
  }
  sqlite::Connection store(support::StoreEnvironment::instance().contactStore(),
                           sqlite::Connection::Mode::ReadOnly);
  const auto kept = store.queryInteger("SELECT max(bytes) - min(bytes) FROM act");
  EXPECT_GT(kept, 10'000);
  EXPECT_LT(kept, 40'000);
  EXPECT_EQ(store.queryInteger("SELECT count(*) FROM act"),
            store.queryInteger("SELECT max(number) - min(number) + 1 FROM act"));
  journal::ChangesSince changes(first);
  EXPECT_FALSE(changes.next());
  EXPECT_TRUE(changes.mustStartAnew());
}

}  // namespace
}  // namespace ox
