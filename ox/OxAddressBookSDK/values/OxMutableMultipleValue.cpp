#include "ox/OxAddressBookSDK/values/OxMutableMultipleValue.hpp"

#include <algorithm>
#include <cassert>
#include <utility>

namespace ox {

void OxMutableMultipleValue::addValue(Element element) {
  if (!element) return;
  if (elements_.empty()) elements_.reserve(4);  // most hold a few: one allocation, not three
  elements_.push_back(std::move(element));
}

OxMutableMultipleValue::Element OxMutableMultipleValue::valueAtIndex(std::uint64_t index) const {
  return index < elements_.size() ? elements_[static_cast<std::size_t>(index)] : nullptr;
}

std::uint64_t OxMutableMultipleValue::indexOfValue(
    const std::shared_ptr<const OxMutableSingleValue>& element) const {
  if (!element) return OxNotFound;
  auto found = std::find(elements_.begin(), elements_.end(), element);
  if (found == elements_.end()) {
    found = std::find_if(elements_.begin(), elements_.end(),
                         [&](const Element& own) { return own->equals(*element); });
  }
  return found == elements_.end() ? OxNotFound
                                  : static_cast<std::uint64_t>(found - elements_.begin());
}

void OxMutableMultipleValue::setMainValue(
    const std::shared_ptr<const OxMutableSingleValue>& element) {
  const auto index = indexOfValue(element);
  if (!element || index != OxNotFound) main_ = index;
  assert(main_ == OxNotFound || main_ < elements_.size());
}

OxValuePtr OxMutableMultipleValue::copy() const {
  auto result = init();
  result->elements_.reserve(elements_.size());
  for (const auto& element : elements_) {
    result->elements_.push_back(element->copySingle());
  }
  result->main_ = main_;
  assert(main_ == OxNotFound || main_ < elements_.size());
  return result;
}

bool OxMutableMultipleValue::equals(const HostObject& other) const {
  if (this == &other) return true;
  const auto* multiple = dynamic_cast<const OxMutableMultipleValue*>(&other);
  if (multiple == nullptr || main_ != multiple->main_) return false;
  return std::equal(elements_.begin(), elements_.end(), multiple->elements_.begin(),
                    multiple->elements_.end(),
                    [](const Element& a, const Element& b) { return a->equals(*b); });
}

}  // namespace ox
