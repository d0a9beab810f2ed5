#include "tests/faults/store_state.hpp"

#include "ox/base/checksum.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "ox/records/fingerprint.hpp"
#include "tests/support/sync_state.hpp"

namespace ox::faults {
namespace {

std::string textOf(ContactSource& source, const RecordKey& key, RecordKind kind) {
  PropertyBag values;
  for (const auto& entry : property_table::all(kind)) {
    auto value = source.value(key, entry.id);
    if (!isMissing(value)) values.set(entry.id, std::move(value));
  }
  const auto image = source.imageData(key);
  const auto container = source.containerOf(key.text(), kind);
  auto text = key.text() + " in " + (container ? container->identifier : "none") + " is " +
              std::to_string(contentFingerprint(values, image)) + " holds";
  if (kind == RecordKind::Person) return text;
  for (const auto below : {RecordKind::Person, RecordKind::Group}) {
    for (const auto& child : *source.children(key, below)) text += ' ' + child.text();
  }
  return text;
}

}  // namespace

std::string stateOf(ContactSource& source) {
  std::string text;
  for (const auto& container : source.containers()) {
    text += container->identifier + ' ' + container->name + ' ' + std::to_string(container->type) +
            '\n';
  }
  for (const auto kind : {RecordKind::Person, RecordKind::Group}) {
    for (const auto& key : source.records(kind)) text += textOf(source, key, kind) + '\n';
  }
  return text + support::syncState(source.sync(), [](const RecordKey& key) { return key.text(); });
}

std::string committedState(const std::string& path) {
  return stateOf(*openStoreSource(path));
}

std::string problemsOf(const std::string& path) {
  std::string text;
  for (const auto& problem : storeProblems(path)) text += problem + '\n';
  return text;
}

}  // namespace ox::faults
