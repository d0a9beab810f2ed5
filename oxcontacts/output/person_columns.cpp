#include "oxcontacts/output/person_columns.hpp"

#include <algorithm>
#include <array>
#include <sstream>

#include "ox/OxAddressBookSDK/objects/OxObjectEmail.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPhone.hpp"
#include "ox/base/text/ascii_case.hpp"
#include "ox/base/text/joined.hpp"
#include "oxcontacts/edit/assignment.hpp"
#include "oxcontacts/output/name_and_id.hpp"
#include "oxcontacts/output/shown_value.hpp"
#include "oxcontacts/output/value_json.hpp"

namespace ox::program {
namespace {

using Room = Table::Room;

constexpr std::string_view kBetween = "; ";

Object firstElement(const _ABPerson& person, std::string_view property) {
  const auto values = multipleOf(person.valueByPropertyName(property));
  return values && values->count() > 0 ? values->valueAtIndex(0)->value() : Object();
}

std::string groupsOf(const _ABPerson& person) {
  std::vector<std::string> names;
  for (const auto& group : person.groups()) names.push_back(group->displayName().value_or(""));
  return joined(names, kBetween);
}

// The main one, else the first: cards rarely say which one is.
std::string phoneOf(const _ABPerson& person) {
  if (auto phone = mainPhone(person)) return *std::move(phone);
  const auto first = firstElement(person, OxProPertyPhone).host<OxObjectPhone>();
  return first ? first->phoneNumber().value_or("") : "";
}

std::string emailOf(const _ABPerson& person) {
  if (auto email = mainEmail(person)) return *std::move(email);
  const auto first = firstElement(person, OxProPertyEmail).host<OxObjectEmail>();
  return first ? first->email().value_or("") : "";
}

struct OwnColumn {
  std::string_view name;
  const char* heading;
  Room room;
  std::string (*cell)(const _ABPerson& person, const BookNames& books);
};

// What is no property, or shows less than all of it.
constexpr std::array kOwnColumns = {
    OwnColumn{"name", "NAME", Room::MayCut,
              [](const _ABPerson& person, const BookNames&) { return nameOrId(person); }},
    OwnColumn{"phone", "PHONE", Room::Whole,
              [](const _ABPerson& person, const BookNames&) { return phoneOf(person); }},
    OwnColumn{"email", "E-MAIL", Room::MayCut,
              [](const _ABPerson& person, const BookNames&) { return emailOf(person); }},
    OwnColumn{"book", "BOOK", Room::MayCut,
              [](const _ABPerson& person, const BookNames& books) {
                return books.nameOf(person.addressBookID());
              }},
    OwnColumn{"groups", "GROUPS", Room::MayCut,
              [](const _ABPerson& person, const BookNames&) { return groupsOf(person); }},
    OwnColumn{"tags", "TAGS", Room::MayCut,
              [](const _ABPerson& person, const BookNames&) {
                return joined(person.tagArray(), kBetween);
              }},
    OwnColumn{"pinyin", "IN LATIN LETTERS", Room::MayCut,
              [](const _ABPerson& person, const BookNames&) {
                return person.nameChineesPinyin().value_or("");
              }},
    OwnColumn{"id", "ID", Room::MayLack,
              [](const _ABPerson& person, const BookNames&) { return person.key().shortText(); }},
};

// All values of a property in one cell.
std::string cellOf(const _ABPerson& person, const OxPropertyPtr& property) {
  const auto value = shownValue(person, property);
  if (!value) return {};
  if (const auto* single = dynamic_cast<const OxMutableSingleValue*>(value.get())) {
    return readableText(single->value());
  }
  std::vector<std::string> texts;
  const auto* multiple = dynamic_cast<const OxMutableMultipleValue*>(value.get());
  for (std::uint64_t i = 0; multiple != nullptr && i < multiple->count(); ++i) {
    texts.push_back(readableText(multiple->valueAtIndex(i)->value()));
  }
  return joined(texts, kBetween);
}

// Birthdays and numbers are told apart by their last letters.
bool mayCut(const OxProperty& property) {
  return property.valueType() != value_type::kDate && property.subValueType() != value_type::kPhone;
}

PersonColumn columnNamed(const std::string& name, const BookNames& books) {
  for (const auto& own : kOwnColumns) {
    if (own.name != name) continue;
    return {{own.heading, Table::Align::Left, own.room},
            [cell = own.cell, &books](const _ABPerson& person) { return cell(person, books); }};
  }
  const auto property =
      propertyCalled(name == "phones" || name == "emails" ? name.substr(0, name.size() - 1) : name);
  if (!property) {
    throw CommandError(kUsage, "there is no column \"" + name + "\"; there are " + columnNames());
  }
  return {{upperCase(property->displayName()), Table::Align::Left,
           mayCut(*property) ? Room::MayCut : Room::Whole},
          [property](const _ABPerson& person) { return cellOf(person, property); }};
}

}  // namespace

std::string columnNames() {
  std::string names;
  for (const auto& own : kOwnColumns) names += (names.empty() ? "" : ", ") + std::string(own.name);
  return names + "; phones, emails and each other property with all its values: " + propertyNames();
}

std::vector<PersonColumn> personColumns(const std::string& list, const BookNames& books) {
  std::vector<PersonColumn> columns;
  std::istringstream names(list);
  for (std::string name; std::getline(names, name, ',');) {
    columns.push_back(columnNamed(name, books));
  }
  if (columns.empty()) throw CommandError(kUsage, "no column is named; there are " + columnNames());
  return columns;
}

Text mainPhone(const _ABPerson& person) {
  const auto phone = person.mainPhone();
  return phone ? phone->phoneNumber() : std::nullopt;
}

Text mainEmail(const _ABPerson& person) {
  const auto email = person.mainEmail();
  return email ? email->email() : std::nullopt;
}

}  // namespace ox::program
