#include "ox/platform/AddressBook/ABPerson.hpp"

#include <utility>

#include "ox/platform/AddressBook/answer.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/vcard/write/writer.hpp"

namespace ox {

std::vector<std::string> ABPerson::properties() {
  std::vector<std::string> names;
  for (auto& entry : property_table::all(RecordKind::Person))
    names.push_back(std::move(entry.name));
  return names;
}

namespace {

// The store may know the name from another process. One that cannot be asked refuses the values.
bool isKnownOtherwise(const std::string& name, std::int32_t type) {
  if (property_table::idOf(RecordKind::Person, name) != 0) return false;
  try {
    const auto stored = recordSource().storedType(name);
    return stored != kABErrorInProperty && stored != type;
  } catch (const StoreError&) {
    return false;
  }
}

template <typename Take>
void forEachProperty(Take take) {
  for (PropertyId id = property_id::kFirst; id <= property_id::kLastMulti; ++id) take(id);
  take(property_id::kCardUid);
  take(property_id::kUnmodelledLines);
  for (PropertyId id = kFirstCustomProperty; property_table::typeOf(id) != kABErrorInProperty;
       ++id) {
    take(id);
  }
}

PropertyBag valuesOf(const RecordKey& person) {
  PropertyBag values;
  forEachProperty([&](PropertyId property) {
    auto value = recordSource().value(person, property);
    if (!isMissing(value)) values.set(property, std::move(value));
  });
  return values;
}

}  // namespace

std::uint64_t ABPerson::addPropertiesAndTypes(
    const std::vector<std::pair<std::string, std::int32_t>>& propertiesAndTypes) {
  std::uint64_t known = 0;
  for (const auto& [name, type] : propertiesAndTypes) {
    const auto wanted = static_cast<ABPropertyType>(type);
    if (!isKnownOtherwise(name, type) && property_table::add(name, wanted) != 0) {
      ++known;
    } else {
      failures::noticeRefusal("the property " + name + " is known with another type, or has none");
    }
  }
  return known;
}

ABPropertyType ABPerson::typeOfProperty(TextView property) {
  if (!property) return kABErrorInProperty;
  return property_table::typeOf(property_table::idOf(RecordKind::Person, *property));
}

Data ABPerson::imageData() const {
  try {
    return recordSource().imageData(key());
  } catch (const ImageReadError& error) {
    failures::notice(error);
    throw;
  } catch (const StoreError& error) {
    failures::notice(error);
    return nullptr;
  }
}

bool ABPerson::setImageData(Data image) {
  return answer([&] { return recordSource().setImageData(key(), std::move(image)); });
}

PropertyBag ABPerson::allValues() const {
  return answer([&] { return valuesOf(key()); });
}

bool ABPerson::setAllValues(const PropertyBag& values) {
  return answer([&] {
    bool done = true;
    forEachProperty([&](PropertyId property) {
      const auto& value = values.value(property);
      if (sameValue(recordSource().value(key(), property), value)) return;
      done = recordSource().setValue(key(), RecordKind::Person, property, value) && done;
    });
    return done;
  });
}

Data ABPerson::vCardRepresentation() const {
  return answer([&]() -> Data {
    const auto values = valuesOf(key());
    if (values.empty() && !recordSource().record(key().text())) return nullptr;
    return makeData(vcard::writeCard(values, nullptr, {.nestedCards = false}));
  });
}

}  // namespace ox
