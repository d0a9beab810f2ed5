#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/records/property_bag.hpp"
#include "ox/vcard/lines/content_line.hpp"
#include "ox/vcard/lines/problem.hpp"
#include "ox/vcard/unmodelled/collected_unmodelled.hpp"
#include "ox/vcard/values/collected_values.hpp"
#include "ox/vcard/values/grouped_lines.hpp"
#include "ox/vcard/values/type_words.hpp"

namespace ox::vcard {

// What has to be known of a card before its first line is read.
struct CardFacts {
  Dialect dialect = Dialect::V30;
  bool hasVersion = false;
  bool is40 = false;
  bool isGroup = false;
};

// What N and FN gave. Which of them names the record is settled when both are there.
struct NameLines {
  bool hasParts = false;                // N gave some
  std::string verbatimParts;            // N, when it was preserved
  std::string partsLine;                // the N of a group, which FN may name otherwise
  std::vector<PropertyDetail> details;  // of that N, to be preserved when the card ends
  std::string formatted;                // of the FN that counts
  std::string formattedLine;            // as it is preserved
  bool isDerived = false;               // it is made of something that is no name
  bool isRepeated = false;              // there are others, which are preserved
};

// TYPE words that no label is made of are parameters to preserve, unless the value is made of them.
enum class UnknownWords { ArePreserved, AreUsed };

// A line that is read when all others are.
struct WaitingLine {
  std::string text;  // as it is preserved
  std::size_t number = 0;
  std::size_t entriesBefore = 0;
};

// What an entry's line has beside its value.
struct EntryExtras {
  std::string_view label = {};  // overrides what the types give
  std::uint32_t ownKinds = 0;   // parameter kinds that the value holds already, as bits
  UnknownWords unknownWords = UnknownWords::ArePreserved;
};

// A card of which some lines have been read. The properties' readers fill it. Used for one card
// after the other, so that its buffers are made once.
struct CardDraft {
  CardFacts facts;
  NameLines name;
  CollectedValues values;
  GroupedLines groups;
  CollectedUnmodelled unmodelled;
  Data photo;
  std::string uid;
  std::vector<std::string> members;
  std::unordered_set<std::string> memberKeys;
  std::vector<WaitingLine> addressLabels;   // LABEL
  std::string noteParameters;               // of the first note
  std::optional<PropertyBag> storedValues;  // of X-OX-PROPERTY
  std::vector<Problem> repairs;
  TypeWords types;  // of the line at hand

  void start(const CardFacts& facts);

  // The line's value as text, without its escapes.
  std::string text(const ContentLine& line) const;
  void repaired(const ContentLine& line, std::string reason);

  void addEntry(PropertyId property, Object&& value, const ContentLine& line,
                const EntryExtras& extras);
  // Puts the last entry of a property where it is the one of that number.
  void moveLastEntry(PropertyId property, std::size_t number);
  // Preserves how the card wrote a single value, or that of the last entry.
  void preserveVerbatim(PropertyId property, std::string_view value);
  // Preserves what a single value's line says beside the value; the parameters among it.
  std::string preserveParameters(PropertyId property, const ContentLine& line,
                                 std::uint32_t ownKinds = 0,
                                 UnknownWords unknownWords = UnknownWords::ArePreserved);
  // The parameters of the line to preserve: `typeWords` of those that labels know.
  std::string parametersOf(const ContentLine& line, std::uint32_t typeWords,
                           std::uint32_t ownKinds = 0,
                           UnknownWords unknownWords = UnknownWords::ArePreserved) const;
  // Preserves the ranks of entries, but for the rank 1 of a primary entry, which being primary
  // tells.
  void preserveRanks();
};

}  // namespace ox::vcard
