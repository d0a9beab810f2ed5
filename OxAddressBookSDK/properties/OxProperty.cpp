#include "OxAddressBookSDK/properties/OxProperty.hpp"

#include <array>
#include <string_view>
#include <unordered_map>

namespace ox {
namespace {

struct Row {
  std::string_view name;
  std::string_view displayName;
  std::int32_t valueType;
  std::int32_t subValueType = value_type::kString;
};

constexpr std::array kRows = {
    Row{OxProPertyName, "Name", value_type::kPersonName},
    Row{OxProPertyThumbnail, "Photo", value_type::kImage},
    Row{OxProPertyTags, "Tags", value_type::kTags},
    Row{OxProPertyPhone, "Phone", value_type::kMultiple, value_type::kPhone},
    Row{OxProPertyEmail, "Email", value_type::kMultiple, value_type::kEmail},
    Row{OxProPertyTitle, "Title", value_type::kString},
    Row{OxProPertySuffix, "Suffix", value_type::kString},
    Row{OxProPertyMaidenName, "Maiden Name", value_type::kString},
    Row{OxProPertyNickname, "Nickname", value_type::kString},
    Row{OxProPertyCompany, "Company", value_type::kString},
    Row{OxProPertyDepartment, "Department", value_type::kString},
    Row{OxProPertyJobTitle, "Job Title", value_type::kString},
    Row{OxProPertyBirthday, "Birthday", value_type::kDate},
    Row{OxProPertyFirstNamePhonetic, "Phonetic First Name", value_type::kString},
    Row{OxProPertyLastNamePhonetic, "Phonetic Last Name", value_type::kString},
    Row{OxProPertyURLs, "URL", value_type::kMultiple, value_type::kURL},
    Row{OxProPertyInstantMessage, "Instant Message", value_type::kMultiple,
        value_type::kInstantMessage},
    Row{OxProPertySocialProfile, "Social Profile", value_type::kMultiple,
        value_type::kDictionaryElement},
    Row{OxProPertyAddress, "Address", value_type::kMultiple, value_type::kAddress},
    Row{OxProPertyRelatedNames, "Related Names", value_type::kMultiple, value_type::kString},
    Row{OxProPertyNote, "Note", value_type::kString},
    Row{OxProPertyOther, "Other", value_type::kMultiple, value_type::kString},
    Row{OxProPertyDate, "Date", value_type::kMultiple, value_type::kDateElement},
};

}  // namespace

struct StandardProperties {
  std::vector<OxPropertyPtr> inOrder;
  std::unordered_map<std::string_view, OxPropertyPtr> byName;

  StandardProperties() {
    for (const auto& row : kRows) {
      inOrder.push_back(std::make_shared<const OxProperty>(OxProperty::Key(), std::string(row.name),
                                                           std::string(row.displayName),
                                                           row.valueType, row.subValueType));
      byName.emplace(row.name, inOrder.back());
    }
  }

  static const StandardProperties& shared() {
    static const auto& properties = *new StandardProperties;
    return properties;
  }
};

OxPropertyPtr OxProperty::propertyWithName(TextView name) {
  if (!name || name->empty()) return nullptr;
  const auto& byName = StandardProperties::shared().byName;
  if (const auto found = byName.find(*name); found != byName.end()) return found->second;
  return std::make_shared<const OxProperty>(Key(), std::string(*name), std::string(*name),
                                            value_type::kString, value_type::kString);
}

const std::vector<OxPropertyPtr>& OxProperty::StandardPropertyArray() {
  return StandardProperties::shared().inOrder;
}

}  // namespace ox
