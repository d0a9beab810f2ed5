#pragma once

#include <span>
#include <string>
#include <string_view>

#include "ox/vcard/values/property_writer.hpp"

namespace ox::vcard {

// An entry of a multi-value on its way into a line.
struct OutgoingEntry {
  PropertyId property = 0;
  std::size_t number = 0;  // among those of the record, from 1 on
  const MultiEntry* held = nullptr;
  unsigned rank = 0;       // of preference: 1 is the most preferred, 0 none
  std::string parameters;  // those that were preserved
  std::string_view verbatim = {};
  std::string_view group = {};  // that it shares with unmodelled lines
  std::span<const DetailView> originalLines = {};
};

// Writes the line of one entry and the lines that its group joins to it. Borrows the card's writer
// and the entry.
class EntryWriter {
 public:
  // Whether the entry has lines of its own beside its label, and whether its own line tells the
  // label already.
  enum class OwnLines { No, Yes };
  enum class TellsLabel { No, Yes };

  EntryWriter(PropertyWriter& card, const OutgoingEntry& entry) : card_(card), entry_(entry) {}

  PropertyWriter& card() { return card_; }
  LineWriter& line() { return card_.line(); }
  bool is30() const { return card_.is30(); }
  const Object& value() const { return entry_.held->value; }
  const Text& label() const { return entry_.held->label; }
  const std::string& parameters() const { return entry_.parameters; }
  std::string_view verbatim() const { return entry_.verbatim; }
  PropertyId property() const { return entry_.property; }
  unsigned rank() const { return entry_.rank; }
  // The lines of other names that gave the value.
  std::span<const DetailView> originalLines() const { return entry_.originalLines; }
  // Empty: the line has none.
  const std::string& group() const { return group_; }

  // Group, name, label and preference, preserved parameters.
  void start(std::string_view name, OwnLines ownLines = OwnLines::No,
             TellsLabel tellsLabel = TellsLabel::No);
  void end();
  // A whole line instead of those, without its group, which gives it the label if it has none.
  void writeLine(std::string_view line, TellsLabel tellsLabel);
  // Another one that says the same, which is written later; left out when its label would be
  // another.
  void repeatLater(std::string_view line, TellsLabel tellsLabel, std::string_view detail);
  // For a line that could not say all of the verbatim value.
  void wrapVerbatim();
  // Begins another line that belongs to this entry: its group, the name, the label if TYPE says it.
  void startAnother(std::string_view name);

 private:
  std::string_view labelParametersFor(std::string_view label) const;
  void writeGroupLabel();
  bool isLabelPreserved(std::string_view label) const;

  PropertyWriter& card_;
  const OutgoingEntry& entry_;
  std::string group_;
  std::string_view typeParameters_;  // that give the label
  std::string_view groupLabel_;      // that X-ABLabel has to give
};

// Writes one entry; false when its line does not give the entry exactly.
using WriteEntry = bool(EntryWriter& entry);

// Writes the entries of a property.
void writeEntries(PropertyWriter& card, PropertyId property, WriteEntry* writeEntry);

}  // namespace ox::vcard
