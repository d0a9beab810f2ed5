#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ox/base/record_key.hpp"
#include "ox/records/property_bag.hpp"

namespace ox::vcard {

using Tags = std::vector<std::string>;

// The tag manager of the book that shows a container.
std::string tagManagerOf(std::string_view container);

// The tags of stored persons, each under the manager of the container that she lies in. Missing
// where the tag file cannot be read, which is noticed once. One thread at a time.
class PersonTags {
 public:
  // True when nobody has tags, which is cheaper to know.
  bool areNone();
  std::optional<Tags> of(const RecordKey& person);

 private:
  std::unordered_map<std::string, std::string> managers_;  // by container
  bool isUnreadable_ = false;
};

// The categories that the card of a person with these tags says; missing when its preserved lines
// say them as they are.
std::optional<Tags> categoriesToWrite(const PropertyBag& properties, const Tags& tags);

}  // namespace ox::vcard
