#pragma once

#include <span>
#include <string_view>

#include "ox/formats/json/contact_lines.hpp"

namespace ox::formats {

// The properties whose place is an object among several of its kind, in the order in which a Card
// object has its members.
std::span<const ContactRow> contactEntryRows();
// The row of that property name, in any case, those of single members and of sets too; null for a
// property that stays one of vCard.
const ContactRow* findContactRow(std::string_view name);

// Addresses and anniversaries, whose objects have objects in them.
void writeContactAddress(ContactEntry& entry);
void writeContactPlace(ContactEntry& entry);
bool isContactPlace(const ContactLines& card, const vcard::ContentLine& line);
void writeContactDate(ContactEntry& entry);
bool isContactDate(const ContactLines& card, const vcard::ContentLine& line);
bool isPlaceOfDate(const ContactLines& card, const vcard::ContentLine& line);

// The member "name": of N, FN and the readings. Nothing without any of them.
void writeContactName(const ContactLines& card, JsonWriter& out);
bool isReadingOfName(const ContactLines& card, const vcard::ContentLine& line);

// A moment as "2020-02-03T04:05:06Z"; empty when the value is not one in UTC.
std::string utcMoment(std::string_view value);

}  // namespace ox::formats
