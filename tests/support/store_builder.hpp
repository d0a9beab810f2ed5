#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ox/platform/store/contact_source.hpp"
#include "ox/records/property_types.hpp"

namespace ox::support {

// An entry of a multi-value: label key and value; the main one is marked.
struct LabelledValue {
  Text label;
  Object value;
  bool main = false;
};

// The values of a person that is being built; what is missing is not stored.
struct PersonValues {
  Text first = std::nullopt;
  Text middle = std::nullopt;
  Text last = std::nullopt;
  Text company = std::nullopt;
  Text nickname = std::nullopt;
  Text note = std::nullopt;
  std::vector<LabelledValue> phones = {};
  std::vector<LabelledValue> emails = {};
  // Any other property.
  std::vector<std::pair<PropertyId, PropertyValue>> more = {};
  Data image = nullptr;
};

PropertyValue multiValue(const std::vector<LabelledValue>& entries);

// Fills the store below any installed seam with committed rows, in the order of the calls:
//
//   StoreBuilder()
//       .container("A:ABAccount", "iCloud", 3)
//       .person("p1", {.first = "Ann"})
//       .group("g1", "Friends")
//       .member("g1", "p1");
//
// Records go into the container named last; the local one until one is named. Identifiers are taken
// as they stand. Throws std::runtime_error when the store refuses.
class StoreBuilder {
 public:
  StoreBuilder();
  explicit StoreBuilder(ContactSource& source);

  // Adds a container, unless there is one with that identifier, and goes on in it.
  StoreBuilder& container(const std::string& identifier, const std::string& name,
                          std::int32_t type);
  // The same with a standard id that another container has already: the store refuses that, but one
  // of an earlier version may hold it. Goes on in it.
  StoreBuilder& twinContainer(const std::string& identifier, const std::string& name,
                              std::int32_t type);
  // Goes on in an existing container (identifier or standard id).
  StoreBuilder& in(const std::string& identifier);
  StoreBuilder& person(const std::string& identifier, const PersonValues& values = {});
  // A missing name: a group that has none.
  StoreBuilder& group(const std::string& identifier, TextView name);
  StoreBuilder& member(const std::string& group, const std::string& person);
  StoreBuilder& members(const std::string& group, std::initializer_list<std::string> persons);
  // A group under another; called again with the same group it gets several parents.
  StoreBuilder& subgroup(const std::string& parent, const std::string& child);
  // `count` persons "<prefix>0", "<prefix>1", ... with that text as first name, in one request.
  StoreBuilder& persons(const std::string& prefix, std::size_t count);

 private:
  StoreBuilder& run(SaveRequest request);

  ContactSource* source_;
  std::string container_ = "_local:ABAccount";
};

}  // namespace ox::support
