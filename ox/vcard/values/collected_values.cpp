#include "ox/vcard/values/collected_values.hpp"

#include <memory>

namespace ox::vcard {

void CollectedValues::clear() {
  for (auto& text : texts_) text.clear();
  birthday_.reset();
  for (auto& multi : multis_) multi = {};
}

// By rising number, so that every value is appended.
void CollectedValues::moveInto(PropertyBag& properties) {
  constexpr std::size_t kUsual = 12;
  properties.reserve(kUsual);
  for (PropertyId id = property_id::kFirst; id <= property_id::kLastSingle; ++id) {
    if (id == property_id::kBirthday) {
      if (birthday_) properties.append(id, Object(*birthday_));
    } else if (!texts_[id].empty()) {
      properties.append(id, Object(std::move(texts_[id])));
    }
  }
  for (PropertyId id = property_id::kFirstMulti; id <= property_id::kLastMulti; ++id) {
    auto& held = multi(id);
    if (held.entries.empty()) continue;
    assert(held.primary <= held.entries.size());
    properties.append(
        id, std::make_shared<const MultiValue>(MultiValue{std::move(held.entries), held.primary}));
  }
}

}  // namespace ox::vcard
