#include "ox/platform/store/committed/known_values.hpp"

#include <algorithm>
#include <utility>

namespace ox {
namespace {

PropertyValue valueIn(const PropertyBag& values, PropertyId property) {
  const auto* value = values.find(property);
  return value != nullptr ? *value : PropertyValue();
}

bool isIn(const std::vector<PropertyId>& properties, PropertyId property) {
  return std::find(properties.begin(), properties.end(), property) != properties.end();
}

}  // namespace

// A record that is changed once more is known as it was read in between.
void KnownValues::keep(const RecordKey& key, const PropertyBag& values) {
  auto& known = of(key);
  if (known.all) {
    for (const auto property : known.readSince) {
      known.values.set(property, valueIn(values, property));
    }
  } else {
    auto written = std::exchange(known.values, values);
    for (const auto property : known.written) {
      if (isIn(known.readSince, property)) continue;
      known.values.set(property, valueIn(written, property));
    }
    known.written.clear();
    known.all = true;
  }
  known.readSince.clear();
}

void KnownValues::noteRead(const RecordKey& key, PropertyId property) {
  const auto* found = records_.find(key);
  if (found == nullptr) return;
  auto& read = (*found)->readSince;
  if (!isIn(read, property)) read.push_back(property);
}

void KnownValues::keepWritten(const RecordKey& key, PropertyId property,
                              const PropertyValue& mine) {
  auto& known = of(key);
  known.values.set(property, mine);
  if (!known.all && !isIn(known.written, property)) known.written.push_back(property);
  std::erase(known.readSince, property);
}

const PropertyValue* KnownValues::find(const RecordKey& key, PropertyId property) {
  const auto* found = records_.find(key);
  if (found == nullptr || isIn((*found)->readSince, property)) return nullptr;
  const auto& known = **found;
  if (!known.all && !isIn(known.written, property)) return nullptr;
  const auto* value = known.values.find(property);
  return value != nullptr ? value : &missing_;
}

KnownValues::Known& KnownValues::of(const RecordKey& key) {
  const auto* found = records_.find(key);
  if (found == nullptr) found = records_.put(key, std::make_shared<Known>(), 1);
  empty_ = false;
  return **found;
}

void KnownValues::clear() {
  records_.clear();
  empty_ = true;
}

}  // namespace ox
