#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ox/records/damaged_bytes.hpp"

namespace ox {

// The tags of one person under one tag manager, before and after an act.
struct TagChange {
  std::string manager;  // its identifier
  std::string person;   // the person's ID
  std::vector<std::string> before;
  std::vector<std::string> after;

  bool operator==(const TagChange&) const = default;
};

// The changes of tags of one act of a store, by the act's number and its random name.
struct TagAct {
  std::int64_t number = 0;
  std::string name;
  std::vector<TagChange> changes;
};

// The stored form, in two parts: texts and counts of texts, each part in a frame of its own (see
// packed_bytes.hpp). Whose tags they are stands before the older ones.
struct StoredTagChange {
  std::string before;
  std::string after;
};

// The bytes are not what encodeTagChange wrote.
class OX_EXPORT DamagedTagChange : public DamagedBytes {
 public:
  using DamagedBytes::DamagedBytes;
};

OX_EXPORT StoredTagChange encodeTagChange(const TagChange& change);
// Throws DamagedTagChange.
OX_EXPORT TagChange decodeTagChange(std::string_view before, std::string_view after);

}  // namespace ox
