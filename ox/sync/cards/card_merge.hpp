#pragma once

#include <string>
#include <vector>

#include "ox/sync/cards/card_content.hpp"

namespace ox::sync {

// A value that both sides have made another of: theirs stands, ours is kept for the user.
struct ValueConflict {
  std::string property;  // for people, and what resolve() takes
  // Encoded (PropertyBag of that one property; bytes of a picture; a name).
  std::string theirs;
  std::string ours;
  std::string base;

  bool operator==(const ValueConflict&) const = default;
};

struct MergedCard {
  CardContent content;         // what the record becomes
  bool changesOurs = false;    // it is not what the record says
  bool changesTheirs = false;  // their text has to be edited: to say what `forThem` says
  // What their text says with what changed here: the other end of an edit of it (card_edit.hpp).
  // What the two sides spell differently for good stays there as it is, unlike in `content`.
  CardContent forThem;
  std::vector<ValueConflict> conflicts;
};

// Brings both sides together, each held against its own base: what their text said and says, what
// the record held and holds. So a server that spells a value its own way, or keeps less than it was
// given, has changed nothing by that. Property by property: what one side has changed is as that
// side has it; what both have changed alike stands; entries of repeated properties (phones,
// members, categories) are sets, and what either side has added or removed is added or removed; of
// one entry, or a single value, that both have changed differently theirs stands, and ours is a
// conflict. A value that one side has changed and the other removed stays, changed. Null bases: the
// two have never met, so that whatever only one has is added, and a single value in which they
// differ is a conflict. UID, REV and PRODID are never merged: the record keeps its own.
MergedCard merge(const CardContent* theirBase, const CardContent& theirs,
                 const CardContent* ourBase, const CardContent& ours);

// The record's content with what the conflict says for ours put in.
CardContent withOurs(const CardContent& content, const ValueConflict& conflict);
// One line for people of an encoded value of that conflict; "nothing" for none.
std::string textOfValue(const std::string& property, const std::string& encoded);

}  // namespace ox::sync
