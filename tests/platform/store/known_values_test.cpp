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

  // Whoever adds to what it has read.
  static void addTo(MultiValue phones, ContactSource& source, const char* number) {
    phones.add(Object(number), "home");
    write(source, std::move(phones));
    ASSERT_TRUE(source.save().done);
  }

  static void add(ContactSource& source, const char* number) {
    addTo(phonesOf(source), source, number);
  }

  // Makes the source look what is new.
  static void look(ContactSource& source) { source.records(RecordKind::Person); }

  std::string path_;
  std::shared_ptr<ContactSource> mine_;
  std::shared_ptr<ContactSource> theirs_;
};

TEST_F(ReadLongAgo, AnAdditionElsewhereBetweenReadingAndWritingStays) {
  const auto read = phonesOf(*mine_);
  add(*theirs_, "2");
  look(*mine_);
  addTo(read, *mine_, "3");
  EXPECT_EQ(numbersOf(*mine_), "1 2 3 ");
}

TEST_F(ReadLongAgo, AFoldedLogInBetweenMakesNothingKnown) {
  const auto read = phonesOf(*mine_);
  add(*theirs_, "2");
  look(*mine_);
  theirs_->checkpoint();
  look(*mine_);
  addTo(read, *mine_, "3");
  EXPECT_EQ(numbersOf(*mine_), "1 2 3 ");
}

TEST_F(ReadLongAgo, AFoldedLogBeforeTheOthersChangeMakesNothingKnown) {
  const auto read = phonesOf(*mine_);
  theirs_->checkpoint();
  look(*mine_);
  add(*theirs_, "2");
  look(*mine_);
  addTo(read, *mine_, "3");
  EXPECT_EQ(numbersOf(*mine_), "1 2 3 ");
}

TEST_F(ReadLongAgo, AnOwnSaveBesideOthersMakesNothingKnown) {
  const auto read = phonesOf(*mine_);
  support::StoreBuilder(*mine_).person("ben");
  add(*theirs_, "2");
  mine_->setValue(RecordKey::of("ben"), RecordKind::Person, property_id::kFirst, Object("Ben"));
  ASSERT_TRUE(mine_->save().done);
  look(*mine_);
  look(*mine_);
  addTo(read, *mine_, "3");
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
  mine_->value(kAnn, property_id::kEmail);
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
  const auto read = phonesOf(*mine_);
  add(*theirs_, "2");
  look(*mine_);
  EXPECT_EQ(
      std::get<MultiValuePtr>(mine_->valueToChange(kAnn, property_id::kPhone))->entries.size(), 1U);
  addTo(read, *mine_, "3");
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

// Of lists of one entry, which are the texts.
class Known : public testing::Test {
 protected:
  static PropertyValue listOf(const char* text) {
    MultiValue list;
    list.add(Object(text), "home");
    return std::make_shared<const MultiValue>(std::move(list));
  }

  static PropertyBag bag(const char* phone, const char* email) {
    PropertyBag values;
    values.set(property_id::kFirst, Object("Ann"));
    values.set(property_id::kPhone, listOf(phone));
    values.set(property_id::kEmail, listOf(email));
    return values;
  }

  std::string textOf(const RecordKey& key, PropertyId property) {
    const auto* value = known_.find(key, property);
    if (value == nullptr) return "as committed";
    if (isMissing(*value)) return "none";
    return std::get<MultiValuePtr>(*value)->entries.front().value.toText().value_or("");
  }

  KnownValues known_;
};

TEST_F(Known, ListsAreThoseOfTheTimeTheyWereReadAt) {
  EXPECT_TRUE(known_.empty());
  EXPECT_EQ(textOf(kAnn, property_id::kPhone), "as committed");
  known_.keep(kAnn, bag("a", "b"));
  EXPECT_EQ(textOf(kAnn, property_id::kPhone), "a");
  EXPECT_EQ(textOf(kAnn, property_id::kURLs), "none");
  known_.noteRead(kAnn, property_id::kPhone);
  EXPECT_EQ(textOf(kAnn, property_id::kPhone), "as committed");
  known_.keep(kAnn, bag("c", "d"));
  EXPECT_EQ(textOf(kAnn, property_id::kPhone), "c");
  EXPECT_EQ(textOf(kAnn, property_id::kEmail), "b");
}

TEST_F(Known, ListsThatWereWrittenStayAsTheyWereWritten) {
  known_.keepWritten(kAnn, property_id::kPhone, listOf("mine"));
  EXPECT_EQ(textOf(kAnn, property_id::kPhone), "mine");
  EXPECT_EQ(textOf(kAnn, property_id::kEmail), "as committed");
  known_.keep(kAnn, bag("theirs", "e"));
  EXPECT_EQ(textOf(kAnn, property_id::kPhone), "mine");
  EXPECT_EQ(textOf(kAnn, property_id::kEmail), "e");
}

TEST_F(Known, NothingIsOfAValueThatIsOneObject) {
  known_.keepWritten(kAnn, property_id::kFirst, Object("mine"));
  EXPECT_TRUE(known_.empty());
  known_.keep(kAnn, bag("a", "b"));
  EXPECT_EQ(textOf(kAnn, property_id::kFirst), "as committed");
  EXPECT_EQ(textOf(kAnn, property_id::kNote), "as committed");
}

}  // namespace
}  // namespace ox
