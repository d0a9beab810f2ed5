#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "ox/OxAddressBookSDK/values/OxMutableSingleValue.hpp"
#include "ox/base/export.hpp"

namespace ox {

// The index that stands for "not among the elements".
inline constexpr std::uint64_t OxNotFound = UINT64_MAX;

// Values in order, one of which may be the main one.
class OX_EXPORT OxMutableMultipleValue final : public OxValue {
  struct Key {
    explicit Key() = default;
  };

 public:
  using Element = std::shared_ptr<OxMutableSingleValue>;

  static std::shared_ptr<OxMutableMultipleValue> init() {
    return std::make_shared<OxMutableMultipleValue>(Key());
  }

  std::int32_t type() const override { return value_type::kMultiple; }
  std::uint64_t count() const { return elements_.size(); }

  // Appends the element itself, not a copy; a missing one is ignored.
  void addValue(Element element);

  // Null when the index is out of range.
  Element valueAtIndex(std::uint64_t index) const;

  // The index of that very element, else of the first one of equal content; OxNotFound when there
  // is none or the argument is missing.
  std::uint64_t indexOfValue(const std::shared_ptr<const OxMutableSingleValue>& element) const;

  // Null when no element is the main one.
  Element mainValue() const { return valueAtIndex(main_); }
  // Makes the element that indexOfValue finds the main one; a missing argument leaves none, and one
  // that is not among the elements changes nothing.
  void setMainValue(const std::shared_ptr<const OxMutableSingleValue>& element);

  OxValuePtr copy() const override;
  bool equals(const HostObject& other) const override;

  explicit OxMutableMultipleValue(Key) {}

 private:
  std::vector<Element> elements_;
  std::uint64_t main_ = OxNotFound;
};

// The value as the multiple one that its type says it is; null for a single and for a missing one.
inline std::shared_ptr<OxMutableMultipleValue> multipleOf(const OxValuePtr& value) {
  if (!value || value->type() != value_type::kMultiple) return nullptr;
  return std::dynamic_pointer_cast<OxMutableMultipleValue>(value);
}

// The value as a single one; null for a multiple and for a missing one.
inline std::shared_ptr<OxMutableSingleValue> singleOf(const OxValuePtr& value) {
  if (!value || value->type() == value_type::kMultiple) return nullptr;
  return std::dynamic_pointer_cast<OxMutableSingleValue>(value);
}

}  // namespace ox
