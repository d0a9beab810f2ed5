#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/formats/card/written_card.hpp"
#include "ox/vcard/read/card.hpp"

namespace ox::formats {

// What a person has once.
enum class Single : std::uint8_t {
  FullName,
  Prefix,
  First,
  Middle,
  Last,
  Suffix,
  FirstReading,
  MiddleReading,
  LastReading,
  Nickname,
  MaidenName,
  Organization,
  Department,
  JobTitle,
  Birthday,
  Note,
  Uid,
};
inline constexpr std::size_t kSingles = 17;

// What a person may have several of.
enum class Kind : std::uint8_t { Email, Phone, Address, Url, Message, Profile, Related, Date };
inline constexpr std::size_t kKinds = 8;

// The parts of such an entry. A message has a service and a user, a profile all of the last four;
// every kind without parts of its own is a Value alone.
enum class Part : std::uint8_t {
  Value,
  Street,
  Box,
  Extended,
  City,
  State,
  Zip,
  Country,
  CountryCode,
  Service,
  User,
  UserId,
  Url,
};
inline constexpr std::size_t kParts = 13;

struct FieldEntry {
  Kind kind = Kind::Email;
  std::string label;  // as the store has it; empty without one
  bool isMain = false;
  std::array<std::string, kParts> parts;

  std::string& operator[](Part part) { return parts[static_cast<std::size_t>(part)]; }
  const std::string& operator[](Part part) const { return parts[static_cast<std::size_t>(part)]; }
  bool isEmpty() const;
};

// A person as tables and directories tell of one: texts with names, dates as "1990-05-17" or
// "--05-17". What else a card has is not in it.
struct PersonFields {
  std::array<std::string, kSingles> singles;
  std::vector<FieldEntry> entries;  // in order, those of one kind together or not
  std::vector<std::string> tags;
  std::vector<std::string> others;  // lines to stand below the note
  Data photo;

  std::string& operator[](Single single) { return singles[static_cast<std::size_t>(single)]; }
  const std::string& operator[](Single single) const {
    return singles[static_cast<std::size_t>(single)];
  }
  bool isEmpty() const;
};

// Whether a text says nothing: it has no more than blanks and line breaks.
inline bool saysNothing(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

PersonFields fieldsOf(const WrittenCard& card);

struct GroupFields {
  std::string name;
  std::string uid;
  std::vector<std::string> members;  // their UIDs
};
GroupFields groupFieldsOf(const WrittenCard& card);

// The card that an import takes for them; `line` is where they stand in their file. A date that
// cannot be read becomes a line below the note, which is a repair.
vcard::Card cardOf(const PersonFields& fields, std::size_t line);
vcard::Card cardOf(const GroupFields& group, std::size_t line);

}  // namespace ox::formats
