#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
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
  // How the card writes its categories: lines, and how many of the unmodelled ones stand before
  // each. Nothing is compared or merged by it.
  std::vector<std::pair<std::size_t, std::string>> categoryLines = {};
};

// What a stored record says: `tags` are those of a person, `members` the UIDs of a group's.
CardContent contentOfRecord(bool isGroup, PropertyBag properties, Data photo,
                            const std::vector<std::string>& tags, std::vector<std::string> members);
// What a record is to hold to say it, its tags and members aside: what an import of such a card
// makes, with lines that say the categories.
PropertyBag propertiesOfRecord(const CardContent& content);

// A card read from a text that holds exactly one, or why it cannot be taken ("more than one card in
// it", what the reader refuses).
struct ReadCard {
  CardContent content;
  std::string uid;  // as written; empty: none
  vcard::CardVersion version = vcard::CardVersion::V30;
};
std::variant<ReadCard, std::string> readCard(std::string_view text);
// The same of a text that has just come: one that ends before its card does is refused. What half a
// card lacks would be deleted on the other side.
std::variant<ReadCard, std::string> readWholeCard(std::string_view text);

// What UIDs are compared by: a leading "urn:uuid:" and the case are spelling alone.
std::string comparableUid(std::string_view uid);

// Whether two contents say the same. Identifiers and order of entries do not count, nor do the UID,
// REV and PRODID, and what a card says of a value beside it (its spelling, parameters of no label).
bool sameContent(const CardContent& a, const CardContent& b);

// The names of the properties in which they differ, for people ("phone", "photo", "members").
std::vector<std::string> differingProperties(const CardContent& a, const CardContent& b);

}  // namespace ox::sync
