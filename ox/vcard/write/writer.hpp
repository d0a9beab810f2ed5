#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/base/record_key.hpp"
#include "ox/records/property_bag.hpp"
#include "ox/vcard/card_version.hpp"

namespace ox::vcard {

struct WriteOptions {
  CardVersion version = CardVersion::V30;
  // The UID of a record that came from no card; empty: such a record gets none.
  std::string_view uid = {};
  // The categories of a person, when they are known from elsewhere: written instead of the
  // preserved lines that say some. Null: those lines are written as they are.
  const std::vector<std::string>* categories = nullptr;
  // Whether the nested cards that were preserved (AGENT) are written too.
  bool nestedCards = true;
};

// Appends the card of a person: UTF-8, CRLF, folded at 75 octets between characters and never
// inside an escape. Nothing but the arguments decides what is written, so equal bags give equal
// bytes. Whatever the version cannot say goes into two lines that our reader takes back:
// X-OX-PROPERTY holds custom properties and the values that the ordinary lines do not give exactly
// (stored_values.hpp), X-OX-LINE an unmodelled line or a detail that the version does not admit,
// percent escaped. Texts have to be UTF-8. A null photo is none. Safe from any thread.
void appendCard(const PropertyBag& properties, const Data& photo, const WriteOptions& options,
                std::string& out);
std::string writeCard(const PropertyBag& properties, const Data& photo,
                      const WriteOptions& options);

// Appends the card of a group: its name, UID and unmodelled lines, and the UIDs of its members, be
// they persons or groups, in that order. In vCard 4.0 KIND:group and MEMBER, in 3.0 the same with
// the names X-ADDRESSBOOKSERVER-KIND and -MEMBER.
void appendGroup(const PropertyBag& properties, const std::vector<std::string>& members,
                 const WriteOptions& options, std::string& out);

}  // namespace ox::vcard
