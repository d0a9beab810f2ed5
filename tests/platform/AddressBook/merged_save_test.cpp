#include <gtest/gtest.h>
#include <string>

#include "ox/base/failures.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "tests/records/entry_lists.hpp"
#include "tests/support/second_process.hpp"
#include "tests/support/store_builder.hpp"

// What a save writes when another process has saved the same person since it was read.

namespace ox {
namespace {

using support::StoreBuilder;
using testing::entryList;

std::shared_ptr<ABPerson> ann() {
  return std::dynamic_pointer_cast<ABPerson>(
      ABAddressBook::sharedAddressBook()->recordForUniqueId("p1"));
}

bool setPhones(const std::string& list) {
  const auto phones = entryList(list);
  if (phones.entries.empty()) return ann()->setValue_forProperty(Object(), kABPhoneProperty);
  return ann()->setValue_forProperty(std::make_shared<const MultiValue>(phones), kABPhoneProperty);
}

std::string phones() {
  const auto value = ann()->valueForProperty(kABPhoneProperty);
  const auto* held = std::get_if<MultiValuePtr>(&value);
  return held != nullptr && *held ? testing::textOf(**held) : "";
}

bool save() {
  return ABAddressBook::sharedAddressBook()->save();
}

const support::SecondProcess savesPhones("savesPhones", [](const auto& arguments) {
  return setPhones(arguments.at(0)) && save() ? 0 : 1;
});

const support::SecondProcess savesNote("savesNote", [](const auto& arguments) {
  const auto note = arguments.at(0).empty() ? Object() : Object(arguments.at(0));
  return ann()->setValue_forProperty(note, kABNoteProperty) && save() ? 0 : 1;
});

class MergedSave : public ::testing::Test {
 protected:
  MergedSave() { StoreBuilder().person("p1", {.first = "Ann"}); }

  // What this process and then another one do to the list that both have read; then this one saves.
  SaveReport saved(const std::string& before, const std::string& mine, const std::string& theirs) {
    EXPECT_TRUE(setPhones(before) && save());
    EXPECT_TRUE(setPhones(mine));
    EXPECT_EQ(savesPhones.run({theirs}).exitCode, 0);
    return ABAddressBook::sharedAddressBook()->saveAndReturnError();
  }

  static std::string reasons(const SaveReport& report) {
    std::string text = report.done && report.dropped.empty() ? "" : "not all was saved; ";
    for (const auto& failure : report.overtaken) {
      EXPECT_EQ(failure.subject, "p1");
      text += failure.reason + "\n";
    }
    return text;
  }

  failures::Watch watch_;
};

// What the other process had added between the read and the change was taken for something that
// this one had seen and left out.
TEST_F(MergedSave, TakesWhatCameAfterTheReadForNoChangeOfMine) {
  ASSERT_TRUE(setPhones("a:1") && save());
  const auto person = ann();
  ASSERT_EQ(phones(), "a:1");
  ASSERT_EQ(savesPhones.run({"a:1 t:6"}).exitCode, 0);
  const auto mine = std::make_shared<const MultiValue>(entryList("a:1 m:5"));
  ASSERT_TRUE(person->setValue_forProperty(mine, kABPhoneProperty));
  EXPECT_EQ(reasons(ABAddressBook::sharedAddressBook()->saveAndReturnError()), "");
  EXPECT_EQ(phones(), "a:1 t:6 m:5");
}

TEST_F(MergedSave, KeepsAdditionsAndRemovalsOfBoth) {
  EXPECT_EQ(reasons(saved("a:1 b:2 c:3", "b:2 c:3 m:5", "a:1 b:2 t:6")), "");
  EXPECT_EQ(phones(), "b:2 t:6 m:5");
  EXPECT_TRUE(watch_.isClear());
}

TEST_F(MergedSave, KeepsWhatOthersAddedToAListThatItClears) {
  EXPECT_EQ(reasons(saved("a:1", "", "a:1 t:6")), "");
  EXPECT_EQ(phones(), "t:6");
  EXPECT_EQ(reasons(saved("a:1", "a:1 m:5", "")), "");
  EXPECT_EQ(phones(), "m:5");
}

TEST_F(MergedSave, NamesTheEntryOfOthersThatItWonOver) {
  EXPECT_EQ(reasons(saved("a:1 b:2", "a:5 b:2", "a:6 b:2 t:7")),
            "the Phone \"6\" of p1 was changed by another program meanwhile; what was saved last "
            "stands\n");
  EXPECT_EQ(phones(), "a:5 b:2 t:7");
  EXPECT_TRUE(watch_.isClear());
}

TEST_F(MergedSave, NamesTheValueOfOthersThatItWonOver) {
  const auto note = [] {
    return std::get<Object>(ann()->valueForProperty(kABNoteProperty)).toText();
  };
  EXPECT_TRUE(ann()->setValue_forProperty(Object("old"), kABNoteProperty) && save());
  ann()->setValue_forProperty(Object("mine"), kABNoteProperty);
  EXPECT_EQ(savesNote.run({"theirs"}).exitCode, 0);
  EXPECT_EQ(reasons(ABAddressBook::sharedAddressBook()->saveAndReturnError()),
            "the Note \"theirs\" of p1 was changed by another program meanwhile; what was saved "
            "last stands\n");
  EXPECT_EQ(note(), "mine");
  ann()->setValue_forProperty(Object("mine again"), kABNoteProperty);
  EXPECT_EQ(savesNote.run({""}).exitCode, 0);
  EXPECT_EQ(reasons(ABAddressBook::sharedAddressBook()->saveAndReturnError()),
            "the Note of p1 was taken away by another program meanwhile; what was saved last "
            "stands\n");
  EXPECT_EQ(note(), "mine again");
}

TEST_F(MergedSave, SaysNothingWhereBothCameToTheSame) {
  EXPECT_EQ(reasons(saved("a:1", "a:5 m:7", "a:5 t:7")), "");
  EXPECT_EQ(phones(), "a:5 t:7");
}

}  // namespace
}  // namespace ox
