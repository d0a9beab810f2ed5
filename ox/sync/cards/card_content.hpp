#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/records/property_bag.hpp"
#include "ox/vcard/card_version.hpp"

namespace ox::sync {

// What one card says, or one record holds with what belongs to it: the form in which both sides are
// compared and merged. A value.
struct CardContent {
  bool isGroup = false;
  // Of a group: name, UID and unmodelled lines. What the text says of categories is not in it: see
  // `categories`.
  PropertyBag properties;
  Data photo;
  std::vector<std::string> categories;  // of a person: the tags
  std::vector<std::string> members;     // of a group: UIDs as uidKey gives them, in order
};

// A card read from a text that holds exactly one, or why it cannot be taken ("two cards in one
// resource", what the reader refuses).
struct ReadCard {
  CardContent content;
  std::string uid;  // as written; empty: none
  vcard::CardVersion version = vcard::CardVersion::V30;
};
std::variant<ReadCard, std::string> readCard(std::string_view text);

// Whether two contents say the same: identifiers of entries, the UID, REV and PRODID do not count.
bool sameContent(const CardContent& a, const CardContent& b);

// The names of the properties in which they differ, for people ("phone", "photo", "members").
std::vector<std::string> differingProperties(const CardContent& a, const CardContent& b);

}  // namespace ox::sync
