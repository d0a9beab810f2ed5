// Whoever changes a value sets out from what it has read, however long ago that was.
#include "ox/platform/store/committed/known_values.hpp"

#include <future>
#include <gtest/gtest.h>
#include <thread>

#include "ox/platform/store/running_act.hpp"
#include "ox/platform/store/store_source.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

const auto kAnn = RecordKey::of("ann");

class ReadLongAgo : public testing::Test {
 protected:
  ReadLongAgo()
      : path_(support::StoreEnvironment::instance().contactStore().string()),
        mine_(openStoreSource(path_)),
        theirs_(openStoreSource(path_)) {
    support::StoreBuilder(*mine_).person("ann", {.first = "Ann", .phones = {{"home", "1"}}});
  }

  static MultiValue phonesOf(ContactSource& source) {
    const auto value = source.value(kAnn, property_id::kPhone);
    const auto phones = std::get<MultiValuePtr>(value);
    return phones ? *phones : MultiValue();
  }

  static std::string numbersOf(ContactSource& source) {
    std::string numbers;
    for (const auto& entry : phonesOf(source).entries) {
      numbers += entry.value.toText().value_or("") + " ";
    }
    return numbers;
  }

  static void write(ContactSource& source, MultiValue phones) {
    EXPECT_TRUE(source.setValue(kAnn, RecordKind::Person, property_id::kPhone,
                                std::make_shared<const MultiValue>(std::move(phones))));
  }

  static void add(ContactSource& source, const char* number) {
    auto phones = phonesOf(source);
    phones.add(Object(number), "home");
    write(source, std::move(phones));
    ASSERT_TRUE(source.save().done);
  }

  // Makes the source look what is new.
  static void look(ContactSource& source) { source.records(RecordKind::Person); }

  std::string path_;
  std::shared_ptr<ContactSource> mine_;
  std::shared_ptr<ContactSource> theirs_;
};

TEST_F(ReadLongAgo, AnAdditionElsewhereBetweenReadingAndWritingStays) {
  auto read = phonesOf(*mine_);
  add(*theirs_, "2");
  look(*mine_);
  read.add(Object("3"), "home");
  write(*mine_, read);
  ASSERT_TRUE(mine_->save().done);
  EXPECT_EQ(numbersOf(*mine_), "1 2 3 ");
}

TEST_F(ReadLongAgo, AFoldedLogInBetweenMakesNothingKnown) {
  auto read = phonesOf(*mine_);
  add(*theirs_, "2");
  look(*mine_);
  theirs_->checkpoint();
  look(*mine_);
  read.add(Object("3"), "home");
  write(*mine_, read);
  ASSERT_TRUE(mine_->save().done);
  EXPECT_EQ(numbersOf(*mine_), "1 2 3 ");
}

TEST_F(ReadLongAgo, AFoldedLogBeforeTheOthersChangeMakesNothingKnown) {
  auto read = phonesOf(*mine_);
  theirs_->checkpoint();
  look(*mine_);
  add(*theirs_, "2");
  look(*mine_);
  read.add(Object("3"), "home");
  write(*mine_, read);
  ASSERT_TRUE(mine_->save().done);
  EXPECT_EQ(numbersOf(*mine_), "1 2 3 ");
}

TEST_F(ReadLongAgo, AnOwnSaveBesideOthersMakesNothingKnown) {
  auto read = phonesOf(*mine_);
  support::StoreBuilder(*mine_).person("ben");
  add(*theirs_, "2");
  mine_->setValue(RecordKey::of("ben"), RecordKind::Person, property_id::kFirst, Object("Ben"));
  ASSERT_TRUE(mine_->save().done);
  look(*mine_);
  look(*mine_);
  read.add(Object("3"), "home");
  write(*mine_, read);
  ASSERT_TRUE(mine_->save().done);
  EXPECT_EQ(numbersOf(*mine_), "1 2 3 ");
}

TEST_F(ReadLongAgo, WritingBackWhatWasReadChangesNothing) {
  const auto read = phonesOf(*mine_);
  add(*theirs_, "2");
  look(*mine_);
  write(*mine_, read);
  EXPECT_TRUE(mine_->unsavedChanges().empty());
  EXPECT_EQ(numbersOf(*mine_), "1 2 ");
}

TEST_F(ReadLongAgo, WhatIsReadAnewIsKnown) {
  phonesOf(*mine_);
  add(*theirs_, "2");
  look(*mine_);
  auto read = phonesOf(*mine_);
  read.entries.pop_back();
  write(*mine_, read);
  ASSERT_TRUE(mine_->save().done);
  EXPECT_EQ(numbersOf(*mine_), "1 ");
}

TEST_F(ReadLongAgo, GoingOnWithTheOwnListAfterAMergeKeepsTheOthersAddition) {
  auto list = phonesOf(*mine_);
  list.add(Object("3"), "home");
  write(*mine_, list);
  add(*theirs_, "2");
  ASSERT_TRUE(mine_->save().done);  // becomes 1 2 3
  list.add(Object("4"), "home");
  write(*mine_, list);
  ASSERT_TRUE(mine_->save().done);
  EXPECT_EQ(numbersOf(*mine_), "1 2 3 4 ");
}

TEST_F(ReadLongAgo, GoingOnWithTheOwnListReplacesWhatWasWrittenBefore) {
  write(*mine_, {});
  auto list = MultiValue();
  list.add(Object("5"), "home");
  write(*mine_, list);
  ASSERT_TRUE(mine_->save().done);
  MultiValue other;
  other.add(Object("6"), "home");
  write(*mine_, other);
  ASSERT_TRUE(mine_->save().done);
  EXPECT_EQ(numbersOf(*mine_), "6 ");
}

TEST_F(ReadLongAgo, AnotherPropertyThatIsReadAnewDoesNotMakeThisOneKnown) {
  auto read = phonesOf(*mine_);
  add(*theirs_, "2");
  look(*mine_);
  mine_->value(kAnn, property_id::kFirst);
  read.add(Object("3"), "home");
  write(*mine_, read);
  add(*theirs_, "4");
  ASSERT_TRUE(mine_->save().done);
  EXPECT_EQ(numbersOf(*mine_), "1 2 4 3 ");
}

TEST_F(ReadLongAgo, OfOneObjectTheLaterChangeCounts) {
  mine_->value(kAnn, property_id::kFirst);
  theirs_->setValue(kAnn, RecordKind::Person, property_id::kFirst, Object("Anna"));
  ASSERT_TRUE(theirs_->save().done);
  look(*mine_);
  EXPECT_TRUE(mine_->setValue(kAnn, RecordKind::Person, property_id::kFirst, Object("Ann")));
  EXPECT_EQ(std::get<Object>(mine_->value(kAnn, property_id::kFirst)), Object("Ann"));
  ASSERT_TRUE(mine_->save().done);
  EXPECT_EQ(std::get<Object>(theirs_->value(kAnn, property_id::kFirst)), Object("Ann"));
}

TEST_F(ReadLongAgo, ReadingOnlyToWriteAnewMakesNothingKnown) {
  auto read = phonesOf(*mine_);
  add(*theirs_, "2");
  look(*mine_);
  EXPECT_EQ(
      std::get<MultiValuePtr>(mine_->valueToChange(kAnn, property_id::kPhone))->entries.size(), 1U);
  read.add(Object("3"), "home");
  write(*mine_, read);
  ASSERT_TRUE(mine_->save().done);
  EXPECT_EQ(numbersOf(*mine_), "1 2 3 ");
}

TEST_F(ReadLongAgo, WhatAnActHasPutIntoAListIsNotSavedByAnotherThread) {
  std::promise<void> added;
  std::promise<void> saved;
  std::thread act([&] {
    const RunningAct running;
    auto list = phonesOf(*mine_);
    list.add(Object("of the act"), "home");
    write(*mine_, list);
    added.set_value();
    saved.get_future().wait();
  });
  added.get_future().wait();
  add(*mine_, "3");
  saved.set_value();
  act.join();
  EXPECT_EQ(numbersOf(*theirs_), "1 3 ");
}

TEST(KnownValues, AreThoseOfTheTimeTheyWereReadAt) {
  const auto bag = [](const char* first, const char* last) {
    PropertyBag values;
    values.set(property_id::kFirst, Object(first));
    values.set(property_id::kLast, Object(last));
    return values;
  };
  KnownValues known;
  EXPECT_TRUE(known.empty());
  EXPECT_EQ(known.find(kAnn, property_id::kFirst), nullptr);
  known.keep(kAnn, bag("a", "b"));
  EXPECT_EQ(std::get<Object>(*known.find(kAnn, property_id::kFirst)), Object("a"));
  EXPECT_TRUE(isMissing(*known.find(kAnn, property_id::kNote)));
  known.noteRead(kAnn, property_id::kFirst);
  EXPECT_EQ(known.find(kAnn, property_id::kFirst), nullptr);
  known.keep(kAnn, bag("c", "d"));
  EXPECT_EQ(std::get<Object>(*known.find(kAnn, property_id::kFirst)), Object("c"));
  EXPECT_EQ(std::get<Object>(*known.find(kAnn, property_id::kLast)), Object("b"));
  const auto ben = RecordKey::of("ben");
  known.keepWritten(ben, property_id::kFirst, Object("mine"));
  EXPECT_EQ(std::get<Object>(*known.find(ben, property_id::kFirst)), Object("mine"));
  EXPECT_EQ(known.find(ben, property_id::kLast), nullptr);
  known.keep(ben, bag("theirs", "e"));
  EXPECT_EQ(std::get<Object>(*known.find(ben, property_id::kFirst)), Object("mine"));
  EXPECT_EQ(std::get<Object>(*known.find(ben, property_id::kLast)), Object("e"));
}

}  // namespace
}  // namespace ox
