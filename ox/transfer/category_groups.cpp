#include "ox/transfer/category_groups.hpp"

#include <stdexcept>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "ox/platform/store/contact_source.hpp"

namespace ox::vcard {
namespace {

std::unordered_map<std::string, RecordKey> groupsByName(const std::string& container) {
  std::unordered_map<std::string, RecordKey> groups;
  for (const auto& key : containerSource().recordsIn(container, RecordKind::Group)) {
    const auto values = containerSource().committedValues(key);
    const auto* name = values ? values->text(property_id::kGroupName) : nullptr;
    if (name != nullptr) groups.try_emplace(*name, key);
  }
  return groups;
}

SaveRequest requestFor(const std::string& container, const CategoryMembers& members) {
  const auto known = groupsByName(container);
  SaveRequest request;
  for (const auto& [name, persons] : members) {
    const auto found = known.find(name);
    auto key = found != known.end() ? found->second : RecordKey::make(RecordKind::Group);
    if (found == known.end()) {
      auto& group = request.additions.emplace_back();
      group.kind = RecordKind::Group;
      group.key = key;
      group.container = container;
      group.properties.set(property_id::kGroupName, Object(name));
    }
    std::unordered_set<RecordKey> held;
    if (found != known.end()) {
      const auto children = containerSource().committedChildren(key, RecordKind::Person);
      held.insert(children->begin(), children->end());
    }
    for (const auto& person : persons) {
      if (held.insert(person).second) request.links.push_back({key, person});
    }
  }
  return request;
}

}  // namespace

std::size_t addCategoryGroups(const std::string& container, const CategoryMembers& members) {
  if (members.empty()) return 0;
  constexpr int kTries = 5;
  for (int tries = 1;; ++tries) {
    const auto moment = containerSource().moment();
    auto request = requestFor(container, members);
    // An act that changes nothing would be one to take back.
    if (request.additions.empty() && request.links.empty()) return 0;
    request.moment = moment;
    // What others keep removing meanwhile is left out at last.
    using enum SaveRequest::WhenOutdated;
    request.whenOutdated = tries < kTries ? Refuse : LeaveOut;
    if (containerSource().execute(request)) return request.additions.size();
    if (!request.outdated) throw std::runtime_error(request.reason);
  }
}

}  // namespace ox::vcard
