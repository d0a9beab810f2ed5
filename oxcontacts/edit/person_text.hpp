#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "ox/OxAddressBookSDK/properties/OxProperty.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"

namespace ox::program {

// A person as texts that somebody can edit: every property that can be assigned. What was edited is
// told by comparing two of them, so that a value that was left alone is left alone in the store.

// The parts of a name or an address by their names; "" for a value without parts. Empty texts are
// no parts.
using TextParts = std::map<std::string, std::string>;

struct TextEntry {
  std::uint64_t was = 0;  // the entry of the record that it was written from; 0: none
  std::string label;      // as it is shown; empty without one
  TextParts parts;
};

struct TextProperty {
  OxPropertyPtr property;
  std::vector<TextEntry> entries;  // at most one where the property is not multiple
};
using PersonText = std::vector<TextProperty>;

PersonText textOf(_ABPerson& person);

// Gives the person, in memory until the save, what the second text says and the first does not.
// True when that is anything. Throws a CommandError (kUsage), before it changes anything, for a
// value that is none of its property. What another program has written meanwhile, and is replaced,
// is added to the last list, for the user.
bool applyEdits(const PersonText& before, const PersonText& after, _ABPerson& person,
                std::vector<std::string>& overtaken);

}  // namespace ox::program
