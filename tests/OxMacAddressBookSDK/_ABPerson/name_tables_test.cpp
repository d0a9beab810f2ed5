#include "ox/OxMacAddressBookSDK/_ABPerson/name_tables.hpp"

#include <gtest/gtest.h>

#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox {
namespace {

struct Row {
  std::string_view left;
  std::string_view right;
};

TEST(PropertyNames, TwentyRowsTranslateBothWays) {
  const _ABPerson person(RecordKey::of("p"));
  const Row rows[] = {
      {OxProPertyPhone, kABPhoneProperty},
      {OxProPertyEmail, kABEmailProperty},
      {OxProPertyTitle, kABTitleProperty},
      {OxProPertySuffix, kABSuffixProperty},
      {OxProPertyMaidenName, kABMaidenNameProperty},
      {OxProPertyNickname, kABNicknameProperty},
      {OxProPertyCompany, kABOrganizationProperty},
      {OxProPertyDepartment, kABDepartmentProperty},
      {OxProPertyJobTitle, kABJobTitleProperty},
      {OxProPertyBirthday, kABBirthdayProperty},
      {OxProPertyFirstNamePhonetic, kABFirstNamePhoneticProperty},
      {OxProPertyLastNamePhonetic, kABLastNamePhoneticProperty},
      {OxProPertyURLs, kABURLsProperty},
      {OxProPertyInstantMessage, kABInstantMessageProperty},
      {OxProPertySocialProfile, kABSocialProfileProperty},
      {OxProPertyAddress, kABAddressProperty},
      {OxProPertyRelatedNames, kABRelatedNamesProperty},
      {OxProPertyNote, kABNoteProperty},
      {OxProPertyOther, OxMacOtherProperty},
      {OxProPertyDate, kABOtherDatesProperty},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(person.macPropertyNameByName(row.left), Text(row.right));
    EXPECT_EQ(person.propertyNameByMacName(row.right), Text(row.left));
  }
}

TEST(PropertyNames, WhatNoRowHasComesBackUnchanged) {
  const _ABPerson person(RecordKey::of("p"));
  const std::string_view names[] = {OxProPertyName, OxProPertyThumbnail, OxProPertyTags, "",
                                    "nick",         kABFirstNameProperty};
  for (const auto name : names) {
    EXPECT_EQ(person.macPropertyNameByName(name), Text(name));
    EXPECT_EQ(person.propertyNameByMacName(name), Text(name));
    EXPECT_EQ(person.labelDisplayNameByName(name), Text(name));
  }
  EXPECT_EQ(person.macPropertyNameByName(kABPhoneProperty), Text(kABPhoneProperty));
  EXPECT_EQ(person.propertyNameByMacName(OxProPertyPhone), Text(OxProPertyPhone));
  EXPECT_EQ(person.macPropertyNameByName(std::nullopt), Text());
  EXPECT_EQ(person.propertyNameByMacName(std::nullopt), Text());
  EXPECT_EQ(person.labelDisplayNameByName(std::nullopt), Text());
}

TEST(LabelWords, EveryKeyHasItsEnglishWord) {
  const _ABPerson person(RecordKey::of("p"));
  const Row rows[] = {
      {kABHomeLabel, "Home"},
      {kABWorkLabel, "Work"},
      {kABOtherLabel, "Other"},
      {kABMobileMeLabel, "Mobile"},
      {kABPhoneMobileLabel, "Mobile"},
      {kABHomePageLabel, "Home Page"},
      {kABPhoneiPhoneLabel, "iPhone"},
      {"_$!<OtherFAX>!$_", "Other Fax"},
      {"_$!<OtherFax>!$_", "_$!<OtherFax>!$_"},
      {kABAssistantLabel, "Assistant"},
      {kABPhoneHomeFAXLabel, "Home Fax"},
      {kABPhoneWorkFAXLabel, "Work Fax"},
      {kABPhonePagerLabel, "Pager"},
      {kABPhoneMainLabel, "Main"},
      {kABFatherLabel, "Father"},
      {kABMotherLabel, "Mother"},
      {kABParentLabel, "Parent"},
      {kABBrotherLabel, "Brother"},
      {kABSisterLabel, "Sister"},
      {kABChildLabel, "Child"},
      {kABFriendLabel, "Friend"},
      {kABSpouseLabel, "Spouse"},
      {kABPartnerLabel, "Partner"},
      {kABManagerLabel, "Manager"},
      {kABAnniversaryLabel, "Anniversary"},
      {"Boat", "Boat"},
      {"Home", "Home"},
      {"home", "home"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(person.labelDisplayNameByName(row.left), Text(row.right));
  }
}

}  // namespace
}  // namespace ox
