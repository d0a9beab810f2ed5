#include <gtest/gtest.h>

#include "ox/base/failures.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "tests/support/second_process.hpp"
#include "tests/support/store_builder.hpp"

// One custom property that two processes give two types.

namespace ox {
namespace {

std::shared_ptr<ABPerson> person(const char* id) {
  return std::dynamic_pointer_cast<ABPerson>(
      ABAddressBook::sharedAddressBook()->recordForUniqueId(id));
}

bool registers(std::int32_t type) {
  return ABPerson::addPropertiesAndTypes({{"Shoes", type}}) == 1;
}

bool save() {
  return ABAddressBook::sharedAddressBook()->save();
}

const support::SecondProcess writesAText("writesAText", [](const auto& arguments) {
  return registers(kABStringProperty) &&
                 person(arguments.at(0).c_str())->setValue_forProperty(Object("large"), "Shoes") &&
                 save()
             ? 0
             : 1;
});

const support::SecondProcess readsTheText("readsTheText", [](const auto& arguments) {
  const auto value = person(arguments.at(0).c_str())->valueForProperty("Shoes");
  return std::get<Object>(value) == Object("large") ? 0 : 1;
});

class CustomTypes : public ::testing::Test {
 protected:
  CustomTypes() {
    support::StoreBuilder().person("ann", {.first = "Ann"}).person("ben", {.first = "Ben"});
  }

  failures::Watch watch_;
};

TEST_F(CustomTypes, AreRefusedWhenTheStoreKnowsAnother) {
  EXPECT_EQ(writesAText.run({"ann"}).exitCode, 0);
  EXPECT_FALSE(registers(kABIntegerProperty));
  EXPECT_EQ(watch_.counts(), (failures::Counts{1, 0}));
  EXPECT_TRUE(registers(kABStringProperty));
  EXPECT_EQ(std::get<Object>(person("ann")->valueForProperty("Shoes")), Object("large"));
}

TEST_F(CustomTypes, RegisteredBeforeTheOtherWroteTakeNoValueAfterwards) {
  EXPECT_TRUE(registers(kABIntegerProperty));
  EXPECT_EQ(writesAText.run({"ann"}).exitCode, 0);
  EXPECT_FALSE(person("ben")->setValue_forProperty(Object(std::int64_t{43}), "Shoes"));
  EXPECT_EQ(watch_.counts(), (failures::Counts{1, 0}));
  EXPECT_EQ(watch_.lastReason(), "the store knows the property Shoes with another type");
}

TEST_F(CustomTypes, OfUnsavedValuesAreDroppedAndNamedAndTheRestIsSaved) {
  EXPECT_TRUE(registers(kABIntegerProperty));
  EXPECT_TRUE(person("ann")->setValue_forProperty(Object(std::int64_t{43}), "Shoes"));
  EXPECT_TRUE(person("ann")->setValue_forProperty(Object("kept"), kABNoteProperty));
  EXPECT_EQ(writesAText.run({"ann"}).exitCode, 0);
  const auto report = ABAddressBook::sharedAddressBook()->saveAndReturnError();
  EXPECT_TRUE(report.done);
  ASSERT_EQ(report.dropped.size(), 1U);
  EXPECT_EQ(report.dropped[0].reason,
            "the changes of ann were dropped: the store knows the property Shoes with another "
            "type");
  EXPECT_EQ(std::get<Object>(person("ann")->valueForProperty(kABNoteProperty)), Object("kept"));
  // What the other one wrote has gone through an edit by this one, which knows another type.
  EXPECT_EQ(readsTheText.run({"ann"}).exitCode, 0);
  EXPECT_TRUE(isMissing(person("ann")->valueForProperty("Shoes")));
}

}  // namespace
}  // namespace ox
