#include <algorithm>
#include <string>

#include "ox/records/property_keys.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/content_line.hpp"
#include "ox/vcard/properties/card_date.hpp"
#include "ox/vcard/properties/type_words.hpp"
#include "ox/vcard/write/card_writer.hpp"

// The lines of multi-values, one an entry. Each function is false when its line does not give the
// entry exactly.

namespace ox::vcard {
namespace {

// What a reader of RELATED makes of TYPE words that were kept.
struct KeptRelation {
  bool isEmpty = true;      // there are none
  bool givesLabel = false;  // they say the label
  bool isSayable = true;    // label and words come back from RELATED
};

KeptRelation keptRelation(std::string_view parameters, const Text& label) {
  ContentLine line;
  std::string head;
  const auto words = keptTypeWords(parameters, head, line);
  if (words.known != 0) return {false, false, false};
  if (words.unknown.empty()) return {};
  std::string_view relation;
  for (const auto word : words.unknown) {
    if (relation.empty()) relation = relationLabel(word);
  }
  if (relation.empty()) return {false, false, true};
  return {false, label == relation, label && words.unknown.size() > 1};
}

// True for kept TYPE words that would give a label to an entry that has none.
bool givesLabel(const MultiEntry& entry, PropertyId property, std::string_view parameters) {
  if (entry.label && !CardText(*entry.label).view().empty()) return false;
  ContentLine line;
  std::string head;
  return !typeLabel(property, keptTypeWords(parameters, head, line).known).label.empty();
}

}  // namespace

void CardWriter::multi(PropertyId property) {
  const auto* value = values_[property];
  if (value == nullptr) return;
  const auto* values = std::get_if<MultiValuePtr>(value);
  if (values == nullptr || (*values)->entries.empty()) return notExact(property);
  const bool ranked = kept_.hasRanks() && ranksHold(**values, property);
  bool allWritten = true;
  std::size_t number = 0;
  for (const auto& held : (*values)->entries) {
    ++number;
    Entry next{property, &held, held.identifier == (*values)->primary ? 1U : 0U, {}};
    if (const auto rank = ranked ? kept_.rankOf(property, held.identifier) : 0; rank != 0) {
      // TYPE knows no ranks.
      const bool isSayable = allWritten && (rank == 1 || !is30());
      if (isSayable) next.rank = rank;
      if (!isSayable) wrapDetail(property, number, ";PREF=", std::to_string(rank));
    }
    for (const auto& kept : kept_.parametersOf(property, held.identifier)) {
      // A reader counts the entries that it finds.
      if (allWritten && areAdmitted(kept.said, options_.version) &&
          !givesLabel(held, property, kept.said)) {
        next.kept.append(kept.said);
      } else {
        entryParameters_.push_back(KeptDetail{property, number, kept.said}.text());
      }
    }
    if (allWritten) {
      next.spelling = kept_.spellingOf(property, held.identifier);
      next.group = kept_.groupOf(property, held.identifier);
    } else {
      wrapDetail(property, number, ":", kept_.spellingOf(property, held.identifier));
      wrapDetail(property, number, ".", kept_.groupOf(property, held.identifier));
    }
    const auto size = out_.size();
    if (!entry(next)) notExact(property);
    if (held.label && !isPlain(*held.label)) notExact(property);
    allWritten &= out_.size() > size;
  }
}

// True when the ranks that were kept make the entry primary that is it now.
bool CardWriter::ranksHold(const MultiValue& values, PropertyId property) const {
  unsigned best = 0;
  std::uint64_t first = 0;
  for (const auto& held : values.entries) {
    auto rank = kept_.rankOf(property, held.identifier);
    if (rank == 0 && held.identifier == values.primary) rank = 1;
    if (rank == 0 || (best != 0 && rank >= best)) continue;
    best = rank;
    first = held.identifier;
  }
  return first == values.primary;
}

void CardWriter::preference(unsigned rank) {
  if (rank == 0) return;
  if (is30()) {
    line_.raw(";TYPE=pref");
  } else {
    line_.raw(";PREF=").number(rank);
  }
}

// For a line of its own.
void CardWriter::wrapDetail(PropertyId property, std::size_t entry, std::string_view mark,
                            std::string_view detail) {
  if (detail.empty()) return;
  const auto said = std::string(mark).append(detail);
  entryParameters_.push_back(KeptDetail{property, entry, said}.text());
}

bool CardWriter::entry(const Entry& entry) {
  switch (entry.property) {
    case property_id::kPhone:
      return simple(entry, "TEL", "TEL:");
    case property_id::kEmail:
      return simple(entry, "EMAIL", "MAILTO:");
    case property_id::kURLs:
      return simple(entry, "URL", {});
    case property_id::kInstantMessage:
      return message(entry);
    case property_id::kSocialProfile:
      return socialProfile(entry);
    case property_id::kAddress:
      return address(entry);
    case property_id::kRelatedNames:
      return related(entry);
    default:
      return date(entry);
  }
}

CardWriter::Head CardWriter::startEntry(const Entry& entry, std::string_view name, bool forceItem,
                                        bool labelled) {
  Head head;
  std::string_view parameters;
  const auto& label = entry.held->label;
  if (label && !labelled) {
    const bool typed =
        entry.property != property_id::kRelatedNames && entry.property != property_id::kOtherDates;
    const auto byType =
        typed ? labelParameters(entry.property, *label, !is30()) : LabelParameters{};
    parameters = byType.parameters;
    if (!entry.kept.empty() && byType.words != 0) {
      // Words that were kept may make another label of it.
      ContentLine line;
      std::string text;
      const auto keptWords = keptTypeWords(entry.kept, text, line).known;
      const auto all = keptWords | byType.words;
      const auto read = typeLabel(entry.property, all);
      if (read.label != *label || (all & ~read.used) != keptWords) parameters = {};
    }
    if (parameters.empty()) head.label = *label;
  }
  head.group = groupFor(entry, head.label, forceItem);
  if (!head.group.empty()) line_.raw(head.group).raw(".");
  line_.raw(name).raw(parameters);
  preference(entry.rank);
  line_.raw(entry.kept);
  return head;
}

// The group of an entry's line. A kept one is shared only by entries that have the same label: it
// holds for all of them, and is taken away here when it stands there already.
std::string CardWriter::groupFor(const Entry& entry, std::string_view& label, bool forceItem) {
  if (!entry.group.empty()) {
    const auto [taken, isFirst] =
        takenGroups_.try_emplace(groupKey(entry.group), TakenGroup{label, forceItem});
    if (isFirst) return std::string(entry.group);
    if (taken->second.label == label && !taken->second.isClosed && !forceItem) {
      label = {};
      return std::string(entry.group);
    }
  }
  if (label.empty() && !forceItem) return {};
  return "item" + std::to_string(nextItem_++);
}

void CardWriter::endEntry(const Entry& entry, const Head& head) {
  line_.end();
  if (head.label.empty()) return;
  const CardText label(*entry.held->label);
  if (label.view().empty()) return;
  line_.raw(head.group).raw(".X-ABLabel:").text(label.view()).end();
}

bool CardWriter::simple(const Entry& entry, std::string_view name, std::string_view scheme) {
  const auto* value = entry.held->value.text();
  if (value == nullptr) return false;
  const CardText text(*value);
  // What a reader takes for the value.
  auto bare = trimmed(text.view());
  if (!scheme.empty() && startsWithWord(bare, scheme)) bare.remove_prefix(scheme.size());
  if (bare.empty()) return false;
  const auto head = startEntry(entry, name);
  line_.raw(":");
  if (entry.property == property_id::kURLs) {
    line_.uri(text.view());
  } else {
    line_.text(text.view());
  }
  endEntry(entry, head);
  return !text.isChanged() && bare.size() == value->size();
}

bool CardWriter::date(const Entry& entry) {
  const auto* date = entry.held->value.as<Date>();
  const auto spelling = date != nullptr ? spellCardDate(*date, !is30()) : std::nullopt;
  if (!spelling) return false;
  const bool anniversary =
      !is30() && !anniversaryWritten_ && entry.held->label == Text(kABAnniversaryLabel);
  anniversaryWritten_ |= anniversary;
  const auto head = startEntry(entry, anniversary ? "ANNIVERSARY" : "X-ABDATE", false, anniversary);
  line_.raw(spelling->omitsYear ? ";X-APPLE-OMIT-YEAR=1604:" : ":").raw(spelling->text);
  endEntry(entry, head);
  return spelling->isExact;
}

bool CardWriter::related(const Entry& entry) {
  const auto* value = entry.held->value.text();
  if (value == nullptr) return false;
  const CardText text(*value);
  if (trimmed(text.view()).empty()) return false;
  const auto& label = entry.held->label;
  const auto word = label ? relationWord(*label) : std::string_view();
  const auto kept = entry.kept.empty() ? KeptRelation{} : keptRelation(entry.kept, label);
  const bool standard = !is30() && kept.isSayable;
  const bool typed = standard && !kept.givesLabel && kept.isEmpty && !word.empty();
  const auto head = startEntry(entry, standard ? "RELATED;VALUE=text" : "X-ABRELATEDNAMES", false,
                               typed || (standard && kept.givesLabel));
  if (typed) line_.raw(";TYPE=").raw(word);
  line_.raw(":").text(text.view());
  endEntry(entry, head);
  return !text.isChanged();
}

}  // namespace ox::vcard
