#include "ox/records/property_types.hpp"

#include <array>
#include <cassert>
#include <deque>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

#include "ox/records/property_keys.hpp"

namespace ox::property_table {
namespace {

struct BuiltIn {
  PropertyId id;
  std::string_view name;
  ABPropertyType type;
};

constexpr std::array kPersonProperties = {
    BuiltIn{property_id::kFirst, kABFirstNameProperty, kABStringProperty},
    BuiltIn{property_id::kMiddle, kABMiddleNameProperty, kABStringProperty},
    BuiltIn{property_id::kLast, kABLastNameProperty, kABStringProperty},
    BuiltIn{property_id::kTitle, kABTitleProperty, kABStringProperty},
    BuiltIn{property_id::kSuffix, kABSuffixProperty, kABStringProperty},
    BuiltIn{property_id::kMaidenName, kABMaidenNameProperty, kABStringProperty},
    BuiltIn{property_id::kNickname, kABNicknameProperty, kABStringProperty},
    BuiltIn{property_id::kOrganization, kABOrganizationProperty, kABStringProperty},
    BuiltIn{property_id::kDepartment, kABDepartmentProperty, kABStringProperty},
    BuiltIn{property_id::kJobTitle, kABJobTitleProperty, kABStringProperty},
    BuiltIn{property_id::kBirthday, kABBirthdayProperty, kABDateProperty},
    BuiltIn{property_id::kFirstPhonetic, kABFirstNamePhoneticProperty, kABStringProperty},
    BuiltIn{property_id::kMiddlePhonetic, kABMiddleNamePhoneticProperty, kABStringProperty},
    BuiltIn{property_id::kLastPhonetic, kABLastNamePhoneticProperty, kABStringProperty},
    BuiltIn{property_id::kNote, kABNoteProperty, kABStringProperty},
    BuiltIn{property_id::kPhone, kABPhoneProperty, kABMultiStringProperty},
    BuiltIn{property_id::kEmail, kABEmailProperty, kABMultiStringProperty},
    BuiltIn{property_id::kURLs, kABURLsProperty, kABMultiStringProperty},
    BuiltIn{property_id::kInstantMessage, kABInstantMessageProperty, kABMultiDictionaryProperty},
    BuiltIn{property_id::kSocialProfile, kABSocialProfileProperty, kABMultiDictionaryProperty},
    BuiltIn{property_id::kAddress, kABAddressProperty, kABMultiDictionaryProperty},
    BuiltIn{property_id::kRelatedNames, kABRelatedNamesProperty, kABMultiStringProperty},
    BuiltIn{property_id::kOtherDates, kABOtherDatesProperty, kABMultiDateProperty},
};

constexpr BuiltIn kGroupName{property_id::kGroupName, kABGroupNameProperty, kABStringProperty};

constexpr std::array kHiddenProperties = {
    BuiltIn{property_id::kCardUid, "(card UID)", kABStringProperty},
    BuiltIn{property_id::kUnmodelledLines, "(unmodelled lines)", kABArrayProperty},
};

constexpr bool numberedFromOne() {
  for (std::size_t i = 0; i < kPersonProperties.size(); ++i) {
    if (kPersonProperties[i].id != i + 1) return false;
  }
  return true;
}
static_assert(numberedFromOne());

const BuiltIn* builtIn(PropertyId id) {
  if (id >= 1 && id <= kPersonProperties.size()) return &kPersonProperties[id - 1U];
  for (const auto& row : kHiddenProperties) {
    if (row.id == id) return &row;
  }
  return id == kGroupName.id ? &kGroupName : nullptr;
}

// The place of each built-in property by its name: a table without collisions, checked at compile
// time, because every read of a property starts here.
constexpr std::size_t kNameSlots = 64;

constexpr std::size_t slotOfName(std::string_view name) {
  const auto letter = [&](std::size_t at) { return static_cast<unsigned char>(name[at]); };
  return (name.size() + letter(0) + letter(name.size() - 1) + letter(name.size() / 2) * 3U) %
         kNameSlots;
}

constexpr std::uint8_t kFreeSlot = 0xFF;

constexpr auto kSlotsByName = [] {
  std::array<std::uint8_t, kNameSlots> slots{};
  slots.fill(kFreeSlot);
  for (std::size_t i = 0; i < kPersonProperties.size(); ++i) {
    auto& slot = slots[slotOfName(kPersonProperties[i].name)];
    if (slot != kFreeSlot) throw "two names share a slot: choose other factors";
    slot = static_cast<std::uint8_t>(i);
  }
  return slots;
}();

const BuiltIn* builtInNamed(std::string_view name) {
  if (name.empty()) return nullptr;
  const auto place = kSlotsByName[slotOfName(name)];
  if (place == kFreeSlot || kPersonProperties[place].name != name) return nullptr;
  return &kPersonProperties[place];
}

bool isType(std::int32_t type) {
  const auto base = type & ~static_cast<std::int32_t>(kABMultiValueMask);
  return base >= kABStringProperty && base <= kABDataProperty;
}

// The custom properties of this process, numbered in the order in which they became known.
class CustomProperties {
 public:
  PropertyId add(std::string_view name, ABPropertyType type) {
    const std::unique_lock lock(mutex_);
    assert(numbers_.size() <= entries_.size());
    const auto found = numbers_.find(name);
    if (found != numbers_.end()) return entry(found->second).type == type ? found->second : 0;
    const auto id = append(name, type);
    if (id != 0) numbers_.emplace(entries_.back().name, id);
    return id;
  }

  // Under a number of its own when the name is known with another type.
  PropertyId addBeside(std::string_view name, ABPropertyType type) {
    const std::unique_lock lock(mutex_);
    for (const auto& known : entries_) {
      if (known.name == name && known.type == type) return known.id;
    }
    return append(name, type);
  }

  PropertyId idOf(std::string_view name) {
    const std::shared_lock lock(mutex_);
    const auto found = numbers_.find(name);
    return found == numbers_.end() ? PropertyId{0} : found->second;
  }

  Entry find(PropertyId id) {
    assert(id >= kFirstCustomProperty);
    const std::shared_lock lock(mutex_);
    const auto index = static_cast<std::size_t>(id - kFirstCustomProperty);
    return index < entries_.size() ? entries_[index] : Entry{0, {}, kABErrorInProperty};
  }

  // Those that are found by their name.
  void appendTo(std::vector<Entry>& list) {
    const std::shared_lock lock(mutex_);
    for (const auto& entry : entries_) {
      if (numbers_.at(entry.name) == entry.id) list.push_back(entry);
    }
  }

 private:
  PropertyId append(std::string_view name, ABPropertyType type) {
    if (entries_.size() >= UINT16_MAX - kFirstCustomProperty) return 0;
    const auto id = static_cast<PropertyId>(kFirstCustomProperty + entries_.size());
    entries_.push_back({id, std::string(name), type});
    return id;
  }

  const Entry& entry(PropertyId id) const {
    const auto index = static_cast<std::size_t>(id - kFirstCustomProperty);
    assert(id >= kFirstCustomProperty && index < entries_.size());
    return entries_[index];
  }

  std::shared_mutex mutex_;
  std::deque<Entry> entries_;  // a deque: the views in numbers_ stay valid
  std::unordered_map<std::string_view, PropertyId> numbers_;
};

CustomProperties& customProperties() {
  static auto& properties = *new CustomProperties;
  return properties;
}

}  // namespace

PropertyId idOf(RecordKind kind, std::string_view name) {
  if (kind == RecordKind::Group) return name == kGroupName.name ? kGroupName.id : PropertyId{0};
  const auto* row = builtInNamed(name);
  return row != nullptr ? row->id : customProperties().idOf(name);
}

ABPropertyType typeOf(PropertyId id) {
  if (id >= kFirstCustomProperty) return customProperties().find(id).type;
  const auto* row = builtIn(id);
  return row != nullptr ? row->type : kABErrorInProperty;
}

bool isList(PropertyId id) {
  return (typeOf(id) & kABMultiValueMask) != 0;
}

std::string nameOf(PropertyId id) {
  if (id >= kFirstCustomProperty) return customProperties().find(id).name;
  const auto* row = builtIn(id);
  return row != nullptr ? std::string(row->name) : std::string();
}

PropertyId add(std::string_view name, ABPropertyType type) {
  if (name.empty() || !isType(type)) return 0;
  if (const auto* row = builtInNamed(name)) return row->type == type ? row->id : PropertyId{0};
  return customProperties().add(name, type);
}

PropertyId addStored(std::string_view name, ABPropertyType type) {
  if (name.empty() || !isType(type)) return 0;
  // A property may have become a built-in one since a store took it for a custom one.
  if (const auto* row = builtInNamed(name)) return row->id;
  const auto id = customProperties().add(name, type);
  return id != 0 ? id : customProperties().addBeside(name, type);
}

std::vector<Entry> all(RecordKind kind) {
  if (kind == RecordKind::Group) {
    return {{kGroupName.id, std::string(kGroupName.name), kGroupName.type}};
  }
  std::vector<Entry> list;
  for (const auto& row : kPersonProperties)
    list.push_back({row.id, std::string(row.name), row.type});
  customProperties().appendTo(list);
  return list;
}

}  // namespace ox::property_table
