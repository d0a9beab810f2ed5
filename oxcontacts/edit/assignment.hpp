#pragma once

#include <string>
#include <vector>

#include "ox/OxAddressBookSDK/properties/OxProperty.hpp"
#include "ox/base/object.hpp"

namespace ox::program {

// What one PROPERTY=VALUE of the command line asks for.
struct Assignment {
  OxPropertyPtr property;
  std::string part;   // of a name or an address, lower case: "first", "city"; empty: the whole
  bool adds = false;  // one more entry, the others stay
  Text label;         // a label key or free text; missing when none was named
  Text typedLabel;    // the same as it was typed
  Object value;       // as the property's elements hold it; the text of a part; missing: clears
};

// Reads PROPERTY[.PART][+][:LABEL]=VALUE; throws a CommandError (kUsage) that says what is wrong.
// Properties and parts in any case; a label that is a built-in word becomes its key,
// whatever its case and blanks.
Assignment parseAssignment(const std::string& text);

// All of them, before anything is changed.
std::vector<Assignment> parseAssignments(const std::vector<std::string>& texts);

// Those that can be assigned, in the order in which they are shown, and how they are called here.
std::vector<OxPropertyPtr> assignableProperties();
std::string shortNameOf(const OxProperty& property);
// What an element of the property, or its only value, holds for that text; throws a CommandError
// (kUsage) where it is none. Names and addresses are given by their parts.
Object valueFromText(const OxProperty& property, const std::string& text);
// The property of that name, in any case, if it is one of those; else null.
OxPropertyPtr propertyCalled(const std::string& name);
// The names of all properties that can be assigned, for the user.
std::string propertyNames();

}  // namespace ox::program
