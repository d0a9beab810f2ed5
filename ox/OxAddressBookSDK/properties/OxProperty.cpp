#include "ox/OxAddressBookSDK/properties/OxProperty.hpp"

#include <array>
#include <cstddef>
#include <deque>
#include <string_view>
#include <utility>

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

// Every read and write of a property passes through a look-up by name, so each standard name has a
// slot of its own, found by its length and two of its letters. A new name may need other factors.
constexpr std::size_t kSlots = 64;
constexpr std::size_t kPrefixLength = std::string_view("OxProPerty").size();

constexpr bool hasSlot(std::string_view name) {
  return name.size() > kPrefixLength + 2;
}

constexpr std::size_t slotOf(std::string_view name) {
  const auto letter = [&](std::size_t at) {
    return std::size_t{static_cast<unsigned char>(name[kPrefixLength + at])};
  };
  return (name.size() * 4 + letter(2) * 13 + letter(0)) % kSlots;
}

constexpr bool slotsAreDistinct() {
  std::array<bool, kSlots> taken{};
  for (const auto& row : kRows) {
    if (!hasSlot(row.name) || std::exchange(taken[slotOf(row.name)], true)) return false;
  }
  return true;
}
static_assert(slotsAreDistinct());

}  // namespace

// The descriptors are never destroyed, so the pointers to them own nothing: copying one counts no
// references.
struct StandardProperties {
  std::deque<OxProperty> descriptors;
  std::vector<OxPropertyPtr> inOrder;
  std::array<OxPropertyPtr, kSlots> bySlot;

  StandardProperties() {
    for (const auto& row : kRows) {
      const auto& descriptor =
          descriptors.emplace_back(OxProperty::Key(), std::string(row.name),
                                   std::string(row.displayName), row.valueType, row.subValueType);
      inOrder.emplace_back(OxPropertyPtr(), &descriptor);
      bySlot[slotOf(row.name)] = inOrder.back();
    }
  }

  static const StandardProperties& shared() {
    static const auto& properties = *new StandardProperties;
    return properties;
  }
};

OxPropertyPtr OxProperty::propertyWithName(TextView name) {
  if (!name || name->empty()) return nullptr;
  if (hasSlot(*name)) {
    const auto& standard = StandardProperties::shared().bySlot[slotOf(*name)];
    if (standard && standard->name() == *name) return standard;
  }
  return std::make_shared<const OxProperty>(Key(), std::string(*name), std::string(*name),
                                            value_type::kString, value_type::kString);
}

const std::vector<OxPropertyPtr>& OxProperty::StandardPropertyArray() {
  return StandardProperties::shared().inOrder;
}

}  // namespace ox
