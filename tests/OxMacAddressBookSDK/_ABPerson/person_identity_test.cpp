#include <gtest/gtest.h>

#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {
namespace {

TEST(PersonBookId, IsTheStampUntilTheCacheIsDropped) {
  StoreBuilder().container("A:ABAccount", "iCloud", 3).person("p", {});
  person("p")->setAddressID("X");
  person("p")->setAddressID(std::nullopt);
  EXPECT_EQ(person("p")->addressBookID(), Text("X"));
  person("p")->removeDisplayNameCache();
  EXPECT_EQ(person("p")->addressBookID(), Text("A"));
}

TEST(PersonBookId, IsWorkedOutOnceAndLocalWithoutContainer) {
  auto& source = SwitchedSource::install();
  StoreBuilder(source.real()).container("A", "iCloud", 3).person("p", {});
  source.hideFromContainerView("p");
  EXPECT_EQ(person("p")->AccountID(), Text());
  EXPECT_EQ(person("p")->addressBookID(), Text("_local"));
  source.resetCounts();
  EXPECT_EQ(person("p")->addressBookID(), Text("_local"));
  EXPECT_EQ(source.counts().containerOf, 0U);
}

TEST(PersonBookId, IsLocalWhereAccessToTheContainersIsDenied) {
  auto& source = SwitchedSource::install();
  StoreBuilder(source.real()).container("A", "iCloud", 3).person("p", {});
  source.denyContainerAccess();
  EXPECT_EQ(person("p")->AccountID(), Text());
  EXPECT_EQ(person("p")->addressBookID(), Text("_local"));
  source.denyContainerAccess(false);
  EXPECT_EQ(person("p")->AccountID(), Text("A"));
  EXPECT_EQ(person("p")->addressBookID(), Text("_local")) << "worked out once";
}

TEST(PersonAddressBook, IsTheFirstOfTheListAndMissingForAnUnknownId) {
  StoreBuilder().container("A", "iCloud", 3).person("p", {});
  const auto books = OxMacAddressBook::addressBookArray();
  EXPECT_EQ(person("p")->personAddressBook(), books.element(1));
  person("p")->setAddressID("unknown");
  EXPECT_EQ(person("p")->personAddressBook(), nullptr);
}

TEST(DisplayName, TakesTheNameThenTheCompanyThenNothing) {
  StoreBuilder()
      .person("named", {.first = "Ann", .last = "Lee", .company = "ACME"})
      .person("company", {.company = "ACME"})
      .person("empty name", {.first = "", .company = "ACME"})
      .person("nothing", {})
      .person("chinese", {.first = "三", .last = "张"})
      .person("broken", {.first = "A\nnn\n"});
  const struct {
    const char* id;
    const char* name;
    const char* pinyin;
  } rows[] = {
      {"named", "Ann Lee", "ANN LEE"},  {"company", "ACME", "ACME"},
      {"empty name", "", ""},           {"nothing", "", ""},
      {"chinese", "张三", "ZHANG SAN"}, {"broken", "Ann", "ANN"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(person(row.id)->displayName(), Text(row.name)) << row.id;
    EXPECT_EQ(person(row.id)->nameChineesPinyin(), Text(row.pinyin)) << row.id;
  }
  EXPECT_EQ(_ABPerson::dictionaryNameSave().count(), std::size(rows));
  EXPECT_EQ(_ABPerson::dictionaryPinyinSave().count(), std::size(rows));
}

TEST(DisplayName, IsRememberedUntilNameOrCompanyAreSet) {
  const auto ann = newPersonWith({.company = "ACME"});
  EXPECT_EQ(ann->nameChineesPinyin(), Text("ACME"));
  // Behind the adapter's back.
  ann->setValue_forProperty(Object("Other"), kABOrganizationProperty);
  EXPECT_EQ(ann->displayName(), Text("ACME"));
  ann->setAddressID("X");
  ann->setValue_byPropertyName(single("Boss", value_type::kString), OxProPertyJobTitle);
  ann->setValue_byPropertyName(onePhone("1"), OxProPertyPhone);
  EXPECT_EQ(ann->mainPhone()->phoneNumber(), Text("1"));
  EXPECT_EQ(ann->displayName(), Text("ACME"));
  EXPECT_EQ(ann->nameChineesPinyin(), Text("ACME"));
  EXPECT_EQ(ann->addressBookID(), Text("X"));
  ann->setValue_byPropertyName(single("ACME2", value_type::kString), OxProPertyCompany);
  EXPECT_EQ(ann->displayName(), Text("ACME2"));
  EXPECT_EQ(ann->nameChineesPinyin(), Text("ACME2"));
  ann->setValue_byPropertyName(
      single(OxObjectPersonName::initWithFirst_middle_last("Ann", {}, {}), value_type::kPersonName),
      OxProPertyName);
  EXPECT_EQ(ann->displayName(), Text("Ann"));
}

TEST(DisplayName, SettingItDropsTheStampToo) {
  const auto ann = newPersonWith({});
  ann->setAddressID("X");
  ann->setValue_byPropertyName(nullptr, OxProPertyNote);
  EXPECT_EQ(ann->addressBookID(), Text("X"));
  ann->setValue_byPropertyName(nullptr, OxProPertyCompany);
  EXPECT_EQ(ann->addressBookID(), Text("_local"));
}

TEST(Transcription, IsUpperCaseLatinWithoutMarks) {
  const auto ann = newPersonWith({});
  EXPECT_EQ(ann->transformChinese("张三 b7é"), Text("ZHANG SAN B7E"));
  EXPECT_EQ(ann->transformChinese(""), Text(""));
  EXPECT_EQ(ann->transformChinese(std::nullopt), Text());
}

}  // namespace
}  // namespace ox::test
