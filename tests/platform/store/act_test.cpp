// Acts: decided from what is committed, written when that still holds, decided again when not.
#include <gtest/gtest.h>

#include "ox/platform/store/committed/act_builder.hpp"
#include "ox/platform/store/committed/contact_store.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "ox/platform/store/writing/act_writer.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

using Outcome = ActWriter::Outcome;

std::string storePath() {
  return support::StoreEnvironment::instance().contactStore().string();
}

NewRecord personNamed(const char* id, const char* name) {
  NewRecord record{RecordKey::of(id), RecordKind::Person, "_local", {}, nullptr};
  record.properties.set(property_id::kFirst, Object(name));
  return record;
}

RecordEdit noteOf(const char* id, const char* note) {
  RecordEdit edit;
  edit.key = RecordKey::of(id);
  edit.values.push_back({property_id::kNote, Object(note), Object()});
  return edit;
}

// Somebody who decides at one time and writes at another, while others are at work.
class SlowWriter {
 public:
  SlowWriter() : file_(storePath()), committed_(file_) {}

  template <typename Decide>
  Act decide(Decide steps) {
    committed_.refresh(CommittedRecords::Look::Now);
    ActBuilder builder(file_, committed_, taken_);
    steps(builder);
    return builder.take();
  }

  Outcome write(const Act& act) {
    sqlite::Transaction transaction(file_.connection());
    ActWriter writer(file_, act, committed_.lastActUnlessOutdated());
    const auto outcome = writer.write();
    if (outcome == Outcome::Written) {
      transaction.commit();
      rows_.clear();
      for (const auto& entry : writer.written().added) rows_.push_back(entry.row);
    }
    return outcome;
  }

  // Of the additions of the act that was written last.
  const std::vector<std::int64_t>& rows() const { return rows_; }

 private:
  StoreFile file_;
  CommittedRecords committed_;
  ActBuilder::Taken taken_;
  std::vector<std::int64_t> rows_;
};

class ActOfASlowWriter : public testing::Test {
 protected:
  ActOfASlowWriter() : others_(openStoreSource(storePath())), build_(*others_) {
    build_.person("ann", {.first = "Ann"}).person("ben", {.first = "Ben"});
    build_.group("top", "Top").group("below", "Below");
  }

  void othersEdit(const char* id) {
    others_->setValue(RecordKey::of(id), RecordKind::Person, property_id::kLast, Object("Lee"));
    ASSERT_TRUE(others_->save().done);
  }

  std::shared_ptr<ContactSource> others_;
  support::StoreBuilder build_;
  SlowWriter slow_;
};

TEST_F(ActOfASlowWriter, HoldsWhileOthersTouchOtherRecords) {
  const auto act = slow_.decide(
      [](ActBuilder& builder) { EXPECT_EQ(builder.applyEdit(noteOf("ann", "x")), ""); });
  othersEdit("ben");
  build_.person("cid");
  EXPECT_EQ(slow_.write(act), Outcome::Written);
}

TEST_F(ActOfASlowWriter, IsOutdatedOnceItsRecordIsTouched) {
  const auto act = slow_.decide(
      [](ActBuilder& builder) { EXPECT_EQ(builder.applyEdit(noteOf("ann", "x")), ""); });
  othersEdit("ann");
  EXPECT_EQ(slow_.write(act), Outcome::Outdated);
}

TEST_F(ActOfASlowWriter, GivesItsAdditionsTheNextFreeRows) {
  const auto cid = personNamed("cid", "Cid");
  const auto dora = personNamed("dora", "Dora");
  const auto act = slow_.decide([&](ActBuilder& builder) {
    builder.addRecord(cid);
    builder.addRecord(dora);
    EXPECT_EQ(builder.addLink({RecordKey::of("top"), RecordKey::of("dora")}), "");
  });
  build_.person("eve").person("fay");  // rows 5 and 6
  EXPECT_EQ(slow_.write(act), Outcome::Written);
  EXPECT_EQ(slow_.rows(), (std::vector<std::int64_t>{7, 8}));
  EXPECT_EQ(*others_->children(RecordKey::of("top"), RecordKind::Person),
            (RecordKeys{RecordKey::of("dora")}));
  EXPECT_EQ(storeProblems(storePath()), std::vector<std::string>{});
}

TEST_F(ActOfASlowWriter, IsOutdatedOnceSomethingComesIntoAGuardedContainer) {
  const auto cid = personNamed("cid", "Cid");
  const auto decide = [&](ActBuilder& builder) {
    builder.guardContainer("_local");
    builder.addRecord(cid);
  };
  const auto first = slow_.decide(decide);
  build_.container("A", "iCloud", 3);
  EXPECT_EQ(slow_.write(first), Outcome::Outdated);  // a container came or went
  const auto second = slow_.decide(decide);
  build_.in("A").person("elsewhere");
  EXPECT_EQ(slow_.write(second), Outcome::Written);
  const auto dora = personNamed("dora", "Dora");
  const auto third = slow_.decide([&](ActBuilder& builder) {
    builder.guardContainer("_local");
    builder.addRecord(dora);
  });
  build_.in("_local").person("here");
  EXPECT_EQ(slow_.write(third), Outcome::Outdated);
}

TEST_F(ActOfASlowWriter, IsOutdatedOnceOthersLinkTheGroupsOfItsAccount) {
  const auto act = slow_.decide([](ActBuilder& builder) {
    EXPECT_EQ(builder.addLink({RecordKey::of("top"), RecordKey::of("below")}), "");
  });
  build_.subgroup("below", "top");
  EXPECT_EQ(slow_.write(act), Outcome::Outdated);
  slow_.decide([](ActBuilder& builder) {
    EXPECT_EQ(builder.addLink({RecordKey::of("top"), RecordKey::of("below")}),
              "the link from top to below was refused: a group would be below itself");
  });
}

TEST_F(ActOfASlowWriter, IsDoneOnceHoweverOftenItIsWritten) {
  const auto cid = personNamed("cid", "Cid");
  const auto act = slow_.decide([&](ActBuilder& builder) { builder.addRecord(cid); });
  EXPECT_EQ(slow_.write(act), Outcome::Written);
  build_.person("dora");
  EXPECT_EQ(slow_.write(act), Outcome::WrittenBefore);
  EXPECT_EQ(others_->records(RecordKind::Person).size(), 4U);
}

TEST_F(ActOfASlowWriter, FindsAnIdentifierTakenMeanwhile) {
  const auto cid = personNamed("cid", "Cid");
  const auto act = slow_.decide([&](ActBuilder& builder) { builder.addRecord(cid); });
  build_.person("cid");
  EXPECT_EQ(slow_.write(act), Outcome::IdentifierTaken);
}

TEST_F(ActOfASlowWriter, IsOutdatedByWhatTheJournalDoesNotTell) {
  const auto act = slow_.decide(
      [](ActBuilder& builder) { EXPECT_EQ(builder.applyEdit(noteOf("ann", "x")), ""); });
  sqlite::Connection(storePath(), sqlite::Connection::Mode::ReadWrite)
      .execute("UPDATE container SET name = 'Mine' WHERE id = 1");
  EXPECT_EQ(slow_.write(act), Outcome::Outdated);
}

// A group that stood between two others goes, and these two change places.
TEST_F(ActOfASlowWriter, LinksWhereAGroupIsThatItRemoves) {
  build_.group("between", "Between").subgroup("top", "between").subgroup("between", "below");
  const auto mine = openStoreSource(storePath());
  EXPECT_TRUE(mine->remove(RecordKey::of("between"), RecordKind::Group));
  EXPECT_TRUE(mine->link(RecordKey::of("below"), RecordKey::of("top"), RecordKind::Group));
  const auto report = mine->save();
  EXPECT_TRUE(report.done);
  EXPECT_EQ(report.dropped.size(), 0U);
  EXPECT_EQ(*others_->children(RecordKey::of("below"), RecordKind::Group),
            (RecordKeys{RecordKey::of("top")}));
}

TEST_F(ActOfASlowWriter, GivesNoLinkTheNumberOfAnother) {
  build_.members("top", {"ann", "ben"});
  others_->unlink(RecordKey::of("top"), RecordKey::of("ben"), RecordKind::Person);
  ASSERT_TRUE(others_->save().done);
  build_.person("cid").member("top", "cid");
  EXPECT_EQ(sqlite::Connection(storePath(), sqlite::Connection::Mode::ReadOnly)
                .queryText("SELECT group_concat(id) FROM link"),
            "1,3");
}

TEST_F(ActOfASlowWriter, GivesALostRowOfValuesBackWithTheReplacement) {
  sqlite::Connection(storePath(), sqlite::Connection::Mode::ReadWrite)
      .execute("DELETE FROM content WHERE record = 1");
  SaveRequest request;
  ReplacedRecord replaced{RecordKey::of("ann"), {}, makeData("picture")};
  replaced.properties.set(property_id::kFirst, Object("Anna"));
  request.replacements.push_back(replaced);
  EXPECT_TRUE(others_->execute(request)) << request.reason;
  EXPECT_EQ(storeProblems(storePath()), std::vector<std::string>{});
  EXPECT_EQ(*others_->imageData(RecordKey::of("ann")), "picture");
}

// One whose picture lies in a file meanwhile.
TEST_F(ActOfASlowWriter, KeepsTheLargePictureThatReplacesAnotherOfTheSameAct) {
  const auto picture = makeData(std::string(1 << 20, 'p'));
  SpillFile file;
  SaveRequest request;
  request.additions.push_back(personNamed("cid", "Cid"));
  ReplacedRecord replaced{RecordKey::of("cid"), {}, nullptr};
  replaced.spilledImage = SpillableData(picture, file);
  request.replacements.push_back(replaced);
  EXPECT_TRUE(others_->execute(request)) << request.reason;
  EXPECT_TRUE(sameData(others_->imageData(RecordKey::of("cid")), picture));
}

// Calls Ann by the name that she has.
RecordEdit whatIsSo() {
  RecordEdit edit;
  edit.key = RecordKey::of("ann");
  edit.values.push_back({property_id::kFirst, Object("Ann"), Object("Anna")});
  return edit;
}

TEST_F(ActOfASlowWriter, IsOfNothingWhereWhatItWantsIsSoAlready) {
  ReplacedRecord replaced{RecordKey::of("ben"), {}, nullptr};
  replaced.properties.set(property_id::kFirst, Object("Ben"));
  const auto act = slow_.decide([&](ActBuilder& builder) {
    EXPECT_EQ(builder.applyEdit(whatIsSo()), "");
    builder.replaceRecord(replaced);
  });
  EXPECT_TRUE(act.empty());
}

TEST_F(ActOfASlowWriter, OfValuesThatAreSoIsOutdatedOnceTheyAreNot) {
  const auto cid = personNamed("cid", "Cid");
  const auto act = slow_.decide([&](ActBuilder& builder) {
    EXPECT_EQ(builder.applyEdit(whatIsSo()), "");
    builder.addRecord(cid);
  });
  othersEdit("ann");
  EXPECT_EQ(slow_.write(act), Outcome::Outdated);
}

// Of a person who is to hold nothing nothing differs, but nobody knows what she held.
TEST_F(ActOfASlowWriter, ReplacesDamagedValuesByNone) {
  sqlite::Connection(storePath(), sqlite::Connection::Mode::ReadWrite)
      .execute("DELETE FROM content WHERE record = 1");
  SaveRequest request;
  request.replacements.push_back({RecordKey::of("ann"), {}, nullptr});
  EXPECT_TRUE(others_->execute(request)) << request.reason;
  EXPECT_EQ(storeProblems(storePath()), std::vector<std::string>{});
}

// The UID of a card stands beside the values, and is theirs after that too.
TEST_F(ActOfASlowWriter, ReplacesDamagedValuesWithTheUidThatTheyHad) {
  const auto ann = RecordKey::of("ann");
  SaveRequest request;
  request.replacements.push_back({ann, {}, nullptr});
  request.replacements.back().properties.set(property_id::kCardUid, Object("her card"));
  ASSERT_TRUE(others_->execute(request)) << request.reason;
  sqlite::Connection(storePath(), sqlite::Connection::Mode::ReadWrite)
      .execute("UPDATE content SET properties = x'0102030405060708' WHERE record = 1");
  SaveRequest none;
  none.replacements.push_back({ann, {}, nullptr});
  EXPECT_TRUE(others_->execute(none)) << none.reason;
  EXPECT_EQ(storeProblems(storePath()), std::vector<std::string>{});
}

TEST(Save, OfWhatOthersHaveSavedMeanwhileIsDoneAndWritesNothing) {
  const auto mine = openStoreSource(storePath());
  const auto others = openStoreSource(storePath());
  support::StoreBuilder(*mine).person("ann", {.first = "Ann"});
  for (const auto& source : {mine, others}) {
    source->setValue(RecordKey::of("ann"), RecordKind::Person, property_id::kNote, Object("x"));
  }
  ASSERT_TRUE(others->save().done);
  const auto moment = mine->moment();
  const auto report = mine->save();
  EXPECT_TRUE(report.done);
  EXPECT_EQ(report.overtaken.size() + report.dropped.size(), 0U);
  EXPECT_TRUE(mine->unsavedChanges().empty());
  EXPECT_EQ(mine->moment(), moment);
}

TEST(ActDecidedAgain, TakesTheLockFirstAfterThreeTries) {
  const auto others = openStoreSource(storePath());
  support::StoreBuilder(*others).person("ann", {.first = "Ann"});
  ContactStore store(storePath());
  int decisions = 0;
  const bool written = store.write(StoreFile::Outlive::Kill, [&](ActBuilder& builder) {
    ++decisions;
    EXPECT_EQ(builder.applyEdit(noteOf("ann", "mine")), "");
    if (decisions > 3) return;  // the lock is held: nobody else can write any more
    others->setValue(RecordKey::of("ann"), RecordKind::Person, property_id::kLast,
                     Object("Lee " + std::to_string(decisions)));
    ASSERT_TRUE(others->save().done);
  });
  EXPECT_TRUE(written);
  EXPECT_EQ(decisions, 4);
  const auto values = store.committed().values(RecordKey::of("ann"));
  EXPECT_EQ(*values->text(property_id::kNote), "mine");
  EXPECT_EQ(*values->text(property_id::kLast), "Lee 3");
}

// In a damaged store an identifier may be taken by a row that nobody sees: no decision avoids it.
TEST(ActDecidedAgain, EndsWhereWhatIsInTheWayIsNeverSeen) {
  const auto others = openStoreSource(storePath());
  support::StoreBuilder(*others).person("ann", {.first = "Ann"});
  ContactStore store(storePath());
  store.refresh(CommittedRecords::Look::Now);
  const auto ann = store.committed().find(RecordKey::of("ann"));
  const NewRecord again{ann->key, RecordKind::Person, "_local:ABAccount", {}, {}};
  int decisions = 0;
  const auto write = [&] {
    store.write(StoreFile::Outlive::Kill, [&](ActBuilder& builder) {
      ++decisions;
      builder.act().added.push_back({again.key, again.kind, ann->container, &again});
    });
  };
  try {
    write();
    FAIL() << "written";
  } catch (const StoreError& error) {
    EXPECT_EQ(error.kind(), FailureKind::Corrupt);
    EXPECT_EQ(
        std::string(error.what()),
        storePath() + ": what is stored is not what can be seen of it, so nothing can be decided");
  }
  EXPECT_EQ(decisions, 12);
  EXPECT_EQ(store.committed().recordsIn("_local:ABAccount", RecordKind::Person).size(), 1U);
}

}  // namespace
}  // namespace ox
