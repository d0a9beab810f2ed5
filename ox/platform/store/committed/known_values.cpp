#include "ox/platform/store/committed/known_values.hpp"

#include <algorithm>
#include <utility>

namespace ox {
namespace {

PropertyBag listsOf(const PropertyBag& values) {
  PropertyBag lists;
  for (const auto& [property, value] : values.entries()) {
    if (property_table::isList(property)) lists.append(property, value);
  }
  return lists;
}

bool isIn(const std::vector<PropertyId>& properties, PropertyId property) {
  return std::find(properties.begin(), properties.end(), property) != properties.end();
}

}  // namespace

// A record that is changed once more is known as it was read in between.
void KnownValues::keep(const RecordKey& key, const PropertyBag& values) {
  auto& known = knownOrNew(key);
  if (known.all) {
    for (const auto property : known.readSince) {
      known.lists.set(property, values.value(property));
    }
  } else {
    const auto written = std::exchange(known.lists, listsOf(values));
    for (const auto property : known.written) {
      if (isIn(known.readSince, property)) continue;
      known.lists.set(property, written.value(property));
    }
    known.written.clear();
    known.all = true;
  }
  known.readSince.clear();
}

void KnownValues::noteRead(const RecordKey& key, PropertyId property) {
  auto* known = property_table::isList(property) ? findRecord(key) : nullptr;
  if (known == nullptr) return;
  auto& read = known->readSince;
  if (!isIn(read, property)) read.push_back(property);
}

void KnownValues::keepWritten(const RecordKey& key, PropertyId property,
                              const PropertyValue& mine) {
  if (!property_table::isList(property)) return;
  auto& known = knownOrNew(key);
  known.lists.set(property, mine);
  if (!known.all && !isIn(known.written, property)) known.written.push_back(property);
  std::erase(known.readSince, property);
}

const PropertyValue* KnownValues::find(const RecordKey& key, PropertyId property) {
  const auto* known = property_table::isList(property) ? findRecord(key) : nullptr;
  if (known == nullptr || isIn(known->readSince, property)) return nullptr;
  if (!known->all && !isIn(known->written, property)) return nullptr;
  return &known->lists.value(property);
}

void KnownValues::keepAll(GenerationCache<RecordKey, KnownContent> records) {
  if (records.empty()) return;  // as at the first look of a process
  earlier_ = std::move(records);
  empty_ = false;
}

KnownValues::Known* KnownValues::findRecord(const RecordKey& key) {
  if (const auto* found = records_.find(key)) return found->get();
  const auto* content = earlier_ ? earlier_->find(key) : nullptr;
  if (content == nullptr || !content->values) return nullptr;
  const auto values = content->values;
  earlier_->erase(key);
  return records_.put(key, std::make_shared<Known>(Known{listsOf(*values), true, {}, {}}), 1)
      ->get();
}

KnownValues::Known& KnownValues::knownOrNew(const RecordKey& key) {
  empty_ = false;
  auto* known = findRecord(key);
  return known != nullptr ? *known : **records_.put(key, std::make_shared<Known>(), 1);
}

void KnownValues::clear() {
  records_.clear();
  earlier_.reset();
  empty_ = true;
}

}  // namespace ox
