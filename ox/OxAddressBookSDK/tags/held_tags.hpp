#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ox/records/tag_change.hpp"

namespace ox {

// Changes of tags that wait to be written, in the order in which they were begun, one for each
// person and manager. Used under its owner's lock.
class HeldTags {
 public:
  using Tags = std::vector<std::string>;

  // What a person has with these changes, who has `tags` without them.
  Tags over(std::string_view manager, std::string_view person, Tags tags) const;
  // Under which managers something is held of the person.
  std::vector<std::string> managersOf(std::string_view person) const;
  // Of whom something is held under that manager.
  std::vector<std::string> personsUnder(std::string_view manager) const;
  // The person, who has `before` with all that is held, is to have `after`.
  void change(std::string_view manager, std::string_view person, const Tags& before,
              const Tags& after);
  // The changes of the other one come after these.
  void append(const HeldTags& later);
  // Without those that came to nothing.
  std::vector<TagChange> changes() const;
  void clear();

 private:
  using Whose = std::pair<std::string_view, std::string_view>;  // person and manager
  struct Before {
    using is_transparent = void;
    bool operator()(const Whose& a, const Whose& b) const { return a < b; }
  };

  std::vector<TagChange> changes_;
  std::map<std::pair<std::string, std::string>, std::size_t, Before> places_;
};

}  // namespace ox
