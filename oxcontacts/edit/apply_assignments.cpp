#include "oxcontacts/edit/apply_assignments.hpp"

#include <algorithm>
#include <array>
#include <cassert>

#include "ox/OxMacAddressBookSDK/_ABPerson/person_entries.hpp"
#include "ox/base/text/case.hpp"
#include "oxcontacts/edit/value_parts.hpp"

namespace ox::program {
namespace {

// The blanks of a built-in word need not be typed. A label of the person's own that stands there
// the way it was typed is meant nevertheless.
Text meantLabel(const Assignment& assignment, const _ABPerson& person,
                const PersonEntries& entries) {
  const auto& typed = assignment.typedLabel;
  const auto& key = assignment.label;
  if (!typed || equalsIgnoringCase(*typed, person.labelDisplayNameByName(key).value_or(""))) {
    return key;
  }
  return entries.holdsLabel(*typed) ? typed : key;
}

void applyWhole(const Assignment& assignment, const Text& label, PersonEntries& entries) {
  if (assignment.adds) {
    entries.add(assignment.value, label);
  } else if (label) {
    entries.replaceLabelled(*label, assignment.value);
  } else {
    entries.replaceAll(assignment.value);
  }
}

void applyAddressPart(const Assignment& assignment, const Text& label, PersonEntries& entries) {
  const auto field = addressFieldOf(assignment.part);
  assert(!field.empty());  // parseAssignment refuses other parts
  const auto text = assignment.value.toText();
  if (assignment.adds) {
    entries.addAddress(field, text.value_or(""), label);
  } else {
    entries.setAddressField(field, text, label);
  }
}

Object nameWithPart(const Assignment& assignment, const _ABPerson& person) {
  const auto name = person.nameValue()->value().host<OxObjectPersonName>();
  const auto part = [&](std::string_view which, const Text& old) {
    return assignment.part == which ? assignment.value.toText() : old;
  };
  return OxObjectPersonName::initWithFirst_middle_last(
      part("first", name->first()), part("middle", name->middle()), part("last", name->last()));
}

void applySingle(const Assignment& assignment, _ABPerson& person) {
  const auto value = assignment.part.empty() ? assignment.value : nameWithPart(assignment, person);
  person.setValue_byProperty(person.singleValueByMacValue_property(value, assignment.property),
                             assignment.property);
}

void applyMultiple(const Assignment& assignment, _ABPerson& person) {
  PersonEntries entries(person, assignment.property);
  const auto label = meantLabel(assignment, person, entries);
  if (assignment.part.empty()) {
    applyWhole(assignment, label, entries);
  } else {
    applyAddressPart(assignment, label, entries);
  }
  entries.write();
}

}  // namespace

void applyAssignments(const std::vector<Assignment>& assignments, _ABPerson& person) {
  for (const auto& assignment : assignments) {
    if (assignment.property->valueType() == value_type::kMultiple) {
      applyMultiple(assignment, person);
    } else {
      applySingle(assignment, person);
    }
  }
}

}  // namespace ox::program
