#include "ox/OxMacAddressBookSDK/_ABPerson/name_tables.hpp"

#include <array>
#include <string>

#include "ox/OxAddressBookSDK/properties/OxPropertyNames.hpp"
#include "ox/base/text/case.hpp"
#include "ox/records/property_keys.hpp"

namespace ox::names {
namespace {

struct Row {
  std::string_view left;
  std::string_view right;
};

constexpr std::array kProperties = {
    Row{OxProPertyPhone, kABPhoneProperty},
    Row{OxProPertyEmail, kABEmailProperty},
    Row{OxProPertyTitle, kABTitleProperty},
    Row{OxProPertySuffix, kABSuffixProperty},
    Row{OxProPertyMaidenName, kABMaidenNameProperty},
    Row{OxProPertyNickname, kABNicknameProperty},
    Row{OxProPertyCompany, kABOrganizationProperty},
    Row{OxProPertyDepartment, kABDepartmentProperty},
    Row{OxProPertyJobTitle, kABJobTitleProperty},
    Row{OxProPertyBirthday, kABBirthdayProperty},
    Row{OxProPertyFirstNamePhonetic, kABFirstNamePhoneticProperty},
    Row{OxProPertyLastNamePhonetic, kABLastNamePhoneticProperty},
    Row{OxProPertyURLs, kABURLsProperty},
    Row{OxProPertyInstantMessage, kABInstantMessageProperty},
    Row{OxProPertySocialProfile, kABSocialProfileProperty},
    Row{OxProPertyAddress, kABAddressProperty},
    Row{OxProPertyRelatedNames, kABRelatedNamesProperty},
    Row{OxProPertyNote, kABNoteProperty},
    Row{OxProPertyOther, OxMacOtherProperty},
    Row{OxProPertyDate, kABOtherDatesProperty},
};

constexpr std::array kGeneralLabels = {
    Row{kABHomeLabel, "Home"},
    Row{kABWorkLabel, "Work"},
    Row{kABOtherLabel, "Other"},
    Row{kABMobileMeLabel, "Mobile"},
    Row{kABPhoneMobileLabel, "Mobile"},
    Row{kABHomePageLabel, "Home Page"},
    Row{kABPhoneiPhoneLabel, "iPhone"},
    Row{"_$!<OtherFAX>!$_", "Other Fax"},  // the store has no constant for it
    Row{kABAssistantLabel, "Assistant"},
    Row{kABPhoneHomeFAXLabel, "Home Fax"},
    Row{kABPhoneWorkFAXLabel, "Work Fax"},
    Row{kABPhonePagerLabel, "Pager"},
    Row{kABPhoneMainLabel, "Main"},
};

constexpr std::array kRelationLabels = {
    Row{kABFatherLabel, "Father"},   Row{kABMotherLabel, "Mother"},
    Row{kABParentLabel, "Parent"},   Row{kABBrotherLabel, "Brother"},
    Row{kABSisterLabel, "Sister"},   Row{kABChildLabel, "Child"},
    Row{kABFriendLabel, "Friend"},   Row{kABSpouseLabel, "Spouse"},
    Row{kABPartnerLabel, "Partner"}, Row{kABAssistantLabel, "Assistant"},
    Row{kABManagerLabel, "Manager"}, Row{kABAnniversaryLabel, "Anniversary"},
};

// The other column of the first row whose `from` column is the text, else `otherwise`.
template <typename Table>
std::string_view lookUp(const Table& table, std::string_view Row::*from, std::string_view Row::*to,
                        std::string_view text, std::string_view otherwise) {
  for (const auto& row : table) {
    if (row.*from == text) return row.*to;
  }
  return otherwise;
}

std::string withoutBlanks(std::string_view text) {
  std::string kept(text);
  std::erase(kept, ' ');
  return kept;
}

// The key of the first row that shows the word; empty when none does.
template <typename Table>
std::string_view keyShownAs(const Table& table, const std::string& word) {
  for (const auto& row : table) {
    // Two keys are shown as Mobile; whoever says so means the telephone.
    if (row.left == kABMobileMeLabel) continue;
    if (equalsIgnoringCase(withoutBlanks(row.right), word)) return row.left;
  }
  return {};
}

}  // namespace

std::string_view storeNameOf(std::string_view propertyName) {
  return lookUp(kProperties, &Row::left, &Row::right, propertyName, propertyName);
}

std::string_view propertyNameOf(std::string_view storeName) {
  return lookUp(kProperties, &Row::right, &Row::left, storeName, storeName);
}

std::string_view labelWordOf(std::string_view labelKey) {
  // What a user typed need not be looked up.
  if (!labelKey.starts_with("_$!<")) return labelKey;
  const auto general = lookUp(kGeneralLabels, &Row::left, &Row::right, labelKey, labelKey);
  return lookUp(kRelationLabels, &Row::left, &Row::right, labelKey, general);
}

std::string_view labelKeyOf(std::string_view word) {
  const auto wanted = withoutBlanks(word);
  if (const auto key = keyShownAs(kGeneralLabels, wanted); !key.empty()) return key;
  const auto key = keyShownAs(kRelationLabels, wanted);
  return key.empty() ? word : key;
}

}  // namespace ox::names
