#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ox/base/json_writer.hpp"
#include "ox/formats/card/written_card.hpp"
#include "ox/formats/json/parameters.hpp"

namespace ox::formats {

class ContactLines;

// One object of a member that holds several: a line, or a value of its list, and where it is
// written to.
struct ContactEntry {
  const ContactLines& card;
  const vcard::ContentLine& line;
  std::string_view value;  // still escaped
  Parameters parameters;   // those that were not written yet
  JsonWriter& out;

  std::string text() const { return textOf(value); }
};

// The place of a property in a Card object.
struct ContactRow {
  std::string_view name;    // of the property, in upper case
  std::string_view member;  // of the Card object
  // Writes what the object has beside contexts, preference, label and parameters; null when
  // another's writer looks for the line.
  void (*write)(ContactEntry& entry) = nullptr;
  // False for a line that has to stay a property of vCard; null: every line has its place.
  bool (*accepts)(const ContactLines& card, const vcard::ContentLine& line) = nullptr;
  enum class Values : std::uint8_t { One, List } values = Values::One;
  enum class Label : std::uint8_t { None, Has } label = Label::Has;
};

// The lines of a card and the place that each has in a Card object.
class ContactLines {
 public:
  // The card is borrowed.
  explicit ContactLines(const WrittenCard& card);

  const WrittenCard& card() const { return card_; }
  const std::vector<vcard::ContentLine>& lines() const { return card_.lines(); }
  // Null for a line that stays a property of vCard.
  const ContactRow* rowOf(const vcard::ContentLine& line) const;
  // The first line of that name that has a place; null without one.
  const vcard::ContentLine* placed(std::string_view name) const;
  // The label that stands in the line's group, and the country; empty without one.
  std::string labelOf(const vcard::ContentLine& line) const;
  std::string countryOf(const vcard::ContentLine& line) const;
  // Whether the group of the line says more than what the object holds.
  bool needsGroup(const vcard::ContentLine& line) const;
  // Whether the line is nowhere in the object but among the properties of vCard.
  bool isLeft(const vcard::ContentLine& line) const;

 private:
  struct Place {
    const ContactRow* row = nullptr;
    bool isOfGroup = false;  // a label or a country that the entries of its group say
  };

  std::size_t indexOf(const vcard::ContentLine& line) const;
  void placeGroupLine(std::size_t index);
  const vcard::ContentLine* ofGroup(const vcard::ContentLine& line, std::string_view name) const;

  const WrittenCard& card_;
  std::vector<Place> places_;  // of each line
};

}  // namespace ox::formats
