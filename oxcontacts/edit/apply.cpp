#include "oxcontacts/edit/apply.hpp"

#include <array>

#include "OxMacAddressBookSDK/_ABPerson/property_names.hpp"
#include "base/text/case.hpp"

namespace ox::program {
namespace {

using Element = OxMutableMultipleValue::Element;

struct FieldRow {
  std::string_view part;
  std::string_view field;
};

constexpr std::array kAddressFields = {
    FieldRow{"street", OxAddressFieldStreet},         FieldRow{"city", OxAddressFieldCity},
    FieldRow{"state", OxAddressFieldState},           FieldRow{"zip", OxAddressFieldZIP},
    FieldRow{"country", OxAddressFieldCountryOrArea},
};

// The elements of a property while they are changed.
struct Entries {
  std::vector<Element> elements;
  Element main;
  bool needsMain = false;
};

Entries entriesOf(const _ABPerson& person, const OxPropertyPtr& property) {
  Entries entries;
  const auto value =
      std::dynamic_pointer_cast<OxMutableMultipleValue>(person.valueByProperty(property));
  for (std::uint64_t i = 0; value && i < value->count(); ++i) {
    entries.elements.push_back(value->valueAtIndex(i));
  }
  if (value) entries.main = value->mainValue();
  entries.needsMain = entries.elements.empty() || entries.main;
  return entries;
}

void write(const Entries& entries, _ABPerson& person, const OxPropertyPtr& property) {
  if (entries.elements.empty()) return person.setValue_byProperty(nullptr, property);
  const auto value = OxMutableMultipleValue::init();
  for (const auto& element : entries.elements) value->addValue(element);
  const auto first = entries.needsMain ? entries.elements.front() : nullptr;
  value->setMainValue(entries.main ? entries.main : first);
  person.setValue_byProperty(value, property);
}

Element newElement(const Assignment& assignment, Object value) {
  auto element = OxMutableSingleValue::init();
  element->setType(assignment.property->subValueType());
  element->setValue(std::move(value));
  auto label = OxLabel::init();
  label->setName(assignment.label);
  element->setLabel(label);
  return element;
}

bool hasLabel(const OxMutableSingleValue& element, const Text& key) {
  const auto& label = element.label();
  if (!label || !label->name() || !key) return false;
  return *label->name() == *key ||
         equalsIgnoringCase(names::labelWordOf(*label->name()), names::labelWordOf(*key));
}

// Takes out the entries of the label, or all; the result is where the first one stood.
std::size_t takeOut(const Text& label, Entries& entries) {
  std::vector<Element> kept;
  std::size_t place = entries.elements.size();
  for (const auto& element : entries.elements) {
    if (label && !hasLabel(*element, label)) {
      kept.push_back(element);
      continue;
    }
    place = std::min(place, kept.size());
    if (element == entries.main) entries.main = nullptr;
  }
  entries.elements = std::move(kept);
  return std::min(place, entries.elements.size());
}

void applyWhole(const Assignment& assignment, Entries& entries) {
  const bool hadMain = entries.main != nullptr;
  auto place = entries.elements.size();
  if (!assignment.adds) place = takeOut(assignment.label, entries);
  if (assignment.value.isMissing()) return;
  const auto element = newElement(assignment, assignment.value);
  entries.elements.insert(entries.elements.begin() + static_cast<std::ptrdiff_t>(place), element);
  // The new entry follows the main one that it replaced, and whatever stood alone is main.
  if (hadMain && !entries.main) entries.main = element;
  if (!assignment.adds && !assignment.label) entries.main = element;
}

std::shared_ptr<OxObjectAddress> copyOf(const OxObjectAddress& address) {
  auto copy = OxObjectAddress::init();
  copy->setCountryCode(address.countryCode());
  for (const auto& row : kAddressFields) {
    copy->setStringValue_forFieldName(address.stringValueByFieldName(row.field), row.field);
  }
  return copy;
}

// The address that a part belongs to; null when it is yet to be made.
Element addressFor(const Assignment& assignment, const Entries& entries) {
  if (assignment.adds || entries.elements.empty()) return nullptr;
  if (!assignment.label) return entries.main ? entries.main : entries.elements.front();
  for (const auto& element : entries.elements) {
    if (hasLabel(*element, assignment.label)) return element;
  }
  return nullptr;
}

bool isEmpty(const OxObjectAddress& address) {
  return std::all_of(kAddressFields.begin(), kAddressFields.end(), [&](const FieldRow& row) {
    return !address.stringValueByFieldName(row.field);
  });
}

void applyAddressPart(const Assignment& assignment, Entries& entries) {
  auto element = addressFor(assignment, entries);
  if (!element && assignment.value.isMissing()) return;
  if (!element) {
    element = newElement(assignment, OxObjectAddress::init());
    entries.elements.push_back(element);
  }
  const auto held = element->value().host<OxObjectAddress>();
  const auto address = held ? copyOf(*held) : OxObjectAddress::init();
  for (const auto& row : kAddressFields) {
    if (row.part != assignment.part) continue;
    address->setStringValue_forFieldName(assignment.value.toText(), row.field);
  }
  element->setValue(address);
  if (!isEmpty(*address)) return;
  std::erase(entries.elements, element);
  if (entries.main == element) entries.main = nullptr;
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

}  // namespace

std::vector<Assignment> parseAssignments(const std::vector<std::string>& texts) {
  std::vector<Assignment> assignments;
  for (const auto& text : texts) assignments.push_back(parseAssignment(text));
  return assignments;
}

void apply(const std::vector<Assignment>& assignments, _ABPerson& person) {
  for (const auto& assignment : assignments) {
    if (assignment.property->valueType() != value_type::kMultiple) {
      applySingle(assignment, person);
      continue;
    }
    auto entries = entriesOf(person, assignment.property);
    if (assignment.part.empty()) {
      applyWhole(assignment, entries);
    } else {
      applyAddressPart(assignment, entries);
    }
    write(entries, person, assignment.property);
  }
}

}  // namespace ox::program
