#include "ox/vcard/values/entry_writer.hpp"

#include <algorithm>
#include <cassert>
#include <utility>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/content_line.hpp"
#include "ox/vcard/unmodelled/line_form.hpp"
#include "ox/vcard/values/type_words.hpp"

namespace ox::vcard {
namespace {

// Related names and dates have labels of their own, which no TYPE word gives.
bool hasTypeLabels(PropertyId property) {
  return property != property_id::kRelatedNames && property != property_id::kOtherDates;
}

// True for preserved TYPE words that would give a label to an entry that has none.
bool wouldGiveLabel(const MultiEntry& entry, PropertyId property, std::string_view parameters) {
  if (entry.label && !CardText(*entry.label).view().empty()) return false;
  const PreservedTypeWords preserved(parameters);
  return !typeLabel(property, preserved.words().known).label.empty() ||
         !extendedLabel(property, preserved.words()).empty();
}

// False for an entry of which no line can say anything: what is a text is not said where it is
// blank, a part of something where it is empty, and a message always is.
bool isSaid(const MultiEntry& entry, PropertyId property) {
  if (const auto* text = entry.value.text()) return !trimmed(CardText(*text).view()).empty();
  const auto* dictionary = entry.value.dictionary();
  if (dictionary == nullptr || property == property_id::kInstantMessage) return true;
  return std::ranges::any_of(dictionary->entries(), [](const auto& each) {
    const auto* text = each.second.text();
    return text == nullptr || !CardText(*text).view().empty();
  });
}

// True when the ranks that were preserved make the entry primary that is it now, for a reader too.
bool doRanksHold(const MultiValue& values, PropertyId property, const Unmodelled& unmodelled) {
  unsigned best = 0;
  std::uint64_t first = 0;
  for (const auto& held : values.entries) {
    auto rank = unmodelled.rankOf(property, held.identifier);
    if (rank == 0 && held.identifier == values.primary) rank = 1;
    if (rank == 0 || (best != 0 && rank >= best) || !isSaid(held, property)) continue;
    best = rank;
    first = held.identifier;
  }
  return first == values.primary;
}

// Prepares the entries of one property and writes them. A reader counts the entries that it finds:
// once one of them could not be written, the details of those that follow are wrapped, with the
// number that the entry has in the record.
class EntriesWriter {
 public:
  EntriesWriter(PropertyWriter& card, PropertyId property, const MultiValue& values)
      : card_(card),
        property_(property),
        primary_(values.primary),
        isRanked_(card.unmodelled().hasRanks() &&
                  doRanksHold(values, property, card.unmodelled())) {}

  void write(const MultiEntry& held, WriteEntry* writeEntry) {
    ++number_;
    OutgoingEntry next{property_, number_, &held, held.identifier == primary_ ? 1U : 0U, {}};
    takeRank(next);
    takeParameters(next);
    takeRest(next);
    const auto size = card_.size();
    EntryWriter entry(card_, next);
    if (!writeEntry(entry)) card_.noteInexact(property_);
    if (held.label && !isPlain(*held.label)) card_.noteInexact(property_);
    allWritten_ &= card_.size() > size;
  }

 private:
  void takeRank(OutgoingEntry& next) {
    const auto rank = isRanked_ ? card_.unmodelled().rankOf(property_, next.held->identifier) : 0;
    if (rank == 0) return;
    // TYPE knows no ranks.
    if (allWritten_ && (rank == 1 || !card_.is30())) {
      next.rank = rank;
    } else {
      card_.wrapLater(preferenceDetail(property_, number_, rank));
    }
  }

  void takeParameters(OutgoingEntry& next) {
    for (const auto& detail : card_.unmodelled().parametersOf(property_, next.held->identifier)) {
      if (allWritten_ && areAdmitted(detail.text, card_.version()) &&
          !wouldGiveLabel(*next.held, property_, detail.text)) {
        next.parameters.append(detail.text);
      } else {
        wrap(DetailKind::Parameters, detail.text);
      }
    }
  }

  void takeRest(OutgoingEntry& next) {
    const auto verbatim = card_.unmodelled().verbatimOf(property_, next.held->identifier);
    const auto group = card_.unmodelled().groupOf(property_, next.held->identifier);
    const auto lines = card_.unmodelled().originalLinesOf(property_, next.held->identifier);
    if (allWritten_) {
      next.verbatim = verbatim;
      next.group = group;
      next.originalLines = lines;
    } else {
      wrap(DetailKind::Verbatim, verbatim);
      wrap(DetailKind::Group, group);
      for (const auto& line : lines) wrap(DetailKind::Line, line.text);
    }
  }

  void wrap(DetailKind kind, std::string_view text) {
    if (!text.empty()) card_.wrapLater({property_, number_, kind, std::string(text)});
  }

  PropertyWriter& card_;
  PropertyId property_;
  std::uint64_t primary_;
  bool isRanked_;
  bool allWritten_ = true;
  std::size_t number_ = 0;
};

}  // namespace

// The TYPE parameters that give the label; empty when X-ABLabel has to.
std::string_view EntryWriter::labelParametersFor(std::string_view label) const {
  if (!hasTypeLabels(entry_.property)) return {};
  const auto byType = labelParameters(entry_.property, label, !is30());
  if (entry_.parameters.empty() || byType.words == 0) return byType.parameters;
  // Words that were preserved may make another label of it.
  const PreservedTypeWords preserved(entry_.parameters);
  const auto preservedWords = preserved.words().known;
  const auto all = preservedWords | byType.words;
  const auto read = typeLabel(entry_.property, all);
  const bool isSame = read.label == label && (all & ~read.used) == preservedWords;
  return isSame ? byType.parameters : std::string_view();
}

// True when the TYPE words that were preserved give the label.
bool EntryWriter::isLabelPreserved(std::string_view label) const {
  if (entry_.parameters.empty()) return false;
  const PreservedTypeWords preserved(entry_.parameters);
  return typeLabel(entry_.property, preserved.words().known).label.empty() &&
         extendedLabel(entry_.property, preserved.words()) == label;
}

void EntryWriter::start(std::string_view name, OwnLines ownLines, TellsLabel tellsLabel) {
  assert(group_.empty() && "an entry has one line of its own");
  if (label() && tellsLabel == TellsLabel::No) {
    typeParameters_ = labelParametersFor(*label());
    if (typeParameters_.empty() && !isLabelPreserved(*label())) groupLabel_ = *label();
  }
  group_ = card_.groups().groupFor(entry_.group, groupLabel_, ownLines == OwnLines::Yes);
  if (!group_.empty()) line().raw(group_).raw(".");
  line().raw(name).raw(typeParameters_);
  card_.writePreference(entry_.rank);
  line().raw(entry_.parameters);
}

void EntryWriter::end() {
  line().end();
  writeGroupLabel();
}

void EntryWriter::writeGroupLabel() {
  if (groupLabel_.empty()) return;
  const CardText clean(*label());
  if (clean.view().empty()) return;
  line().raw(group_).raw(".X-ABLabel:").text(clean.view()).end();
}

void EntryWriter::writeLine(std::string_view text, TellsLabel tellsLabel) {
  if (label() && tellsLabel == TellsLabel::No) groupLabel_ = *label();
  group_ = card_.groups().groupFor(entry_.group, groupLabel_, false);
  if (!group_.empty()) line().raw(group_).raw(".");
  line().raw(text).end();
  writeGroupLabel();
}

// The label of a group is that of all its lines.
void EntryWriter::repeatLater(std::string_view text, TellsLabel tellsLabel,
                              std::string_view detail) {
  std::string whole;
  if (label() && tellsLabel == TellsLabel::No) {
    if (groupLabel_.empty() || group_.empty()) return;
    whole.append(group_).append(1, '.');
  }
  card_.repeatLater(whole.append(text),
                    {entry_.property, entry_.number, DetailKind::Line, std::string(detail)});
}

void EntryWriter::wrapVerbatim() {
  card_.wrapLater(
      {entry_.property, entry_.number, DetailKind::Verbatim, std::string(entry_.verbatim)});
}

void EntryWriter::startAnother(std::string_view name) {
  if (!group_.empty()) line().raw(group_).raw(".");
  line().raw(name).raw(typeParameters_);
  if (entry_.rank == 1) card_.writePreference(1);
}

void writeEntries(PropertyWriter& card, PropertyId property, WriteEntry* writeEntry) {
  const auto* value = card.valueOf(property);
  if (value == nullptr) return;
  const auto* values = std::get_if<MultiValuePtr>(value);
  if (values == nullptr || (*values)->entries.empty()) return card.noteInexact(property);
  EntriesWriter entries(card, property, **values);
  for (const auto& held : (*values)->entries) entries.write(held, writeEntry);
}

}  // namespace ox::vcard
