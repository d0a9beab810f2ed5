#include <algorithm>
#include <string>
#include <unordered_set>
#include <utility>

#include "ox/records/property_keys.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/read/card_builder.hpp"
#include "ox/vcard/unmodelled/kept_lines.hpp"
#include "ox/vcard/unmodelled/kept_texts.hpp"

// Lines of a card that a group joins: "item1.TEL" and "item1.X-ABLabel".

namespace ox::vcard {
namespace {

struct ByGroup {
  template <typename A, typename B>
  bool operator()(const A& a, const B& b) const {
    return a.group < b.group;
  }
};

bool isCountryCode(std::string_view text) {
  return text.size() == 2 && isLetter(text[0]) && isLetter(text[1]);
}

}  // namespace

bool CardBuilder::addGroupNote(const ContentLine& line) {
  if (line.group.empty()) return false;
  GroupNote note{groupKey(line.group), line.row->meaning, text(line), {}, line.number, 0, false};
  if (note.meaning == Meaning::CountryCode && !isCountryCode(note.text)) return false;
  appendKept(line, note.kept);
  notes_.push_back(std::move(note));
  return true;
}

// Labels and country codes may stand before or after the line they belong to.
void CardBuilder::joinGroups() {
  std::stable_sort(notes_.begin(), notes_.end(), ByGroup{});
  dropDoubleNotes();
  sharedLabels_ = 0;
  for (const auto& entry : grouped_) {
    const auto [first, last] = std::equal_range(notes_.begin(), notes_.end(), entry, ByGroup{});
    std::for_each(first, last, [&](GroupNote& note) { applyNote(entry, note); });
  }
  for (auto& note : notes_) {
    if (note.uses == 0) unmodelled_.emplace_back(std::move(note.kept));
  }
}

// Of several labels of one group the last counts, and of several country codes.
void CardBuilder::dropDoubleNotes() {
  const std::string* labelled = nullptr;
  const std::string* coded = nullptr;
  std::for_each(notes_.rbegin(), notes_.rend(), [&](GroupNote& note) {
    const auto*& later = note.meaning == Meaning::Label ? labelled : coded;
    note.isDouble = later != nullptr && *later == note.group;
    later = &note.group;
  });
  for (const auto& note : notes_) {
    if (!note.isDouble) continue;
    const auto* const name = note.meaning == Meaning::Label ? "X-ABLabel" : "X-ABADR";
    card_.repairs.push_back(
        {note.line, std::string("a later ") + name + " of the group takes its place"});
  }
  std::erase_if(notes_, [](const GroupNote& note) { return note.isDouble; });
}

// Entries that share a group with lines that were kept.
void CardBuilder::keepGroups() {
  std::unordered_set<std::string> groups;
  for (const auto& kept : unmodelled_) {
    const auto group = groupOfLine(*kept.text());
    if (!group.empty()) groups.insert(groupKey(group));
  }
  if (groups.empty()) return;
  for (const auto& entry : grouped_) {
    if (!groups.contains(entry.group)) continue;
    unmodelled_.emplace_back(KeptDetail{entry.property, entry.entry, "." + entry.spelling}.text());
  }
}

void CardBuilder::applyNote(const GroupedEntry& entry, GroupNote& note) {
  if (note.meaning == Meaning::Label) {
    applyLabel(entry, note);
  } else if (entry.property == property_id::kAddress) {
    ++note.uses;
    auto& held = multi(entry.property).entries[entry.entry - 1];
    Dictionary address = *held.value.dictionary();
    address.set(kABAddressCountryCodeKey, note.text);
    held.value = std::move(address);
  }
}

// One label serves all entries of its group, as long as the copies stay within a bound: a card
// must not make the memory of many of it.
void CardBuilder::applyLabel(const GroupedEntry& entry, GroupNote& note) {
  constexpr std::size_t kMostShared = 1U << 20U;
  ++note.uses;
  if (note.text.empty()) return;
  if (note.uses > 1) {
    const bool wasFull = sharedLabels_ > kMostShared;
    sharedLabels_ += note.text.size();
    if (sharedLabels_ > kMostShared) {
      if (!wasFull) card_.repairs.push_back({note.line, "label too long for all of its group"});
      return;
    }
  }
  multi(entry.property).entries[entry.entry - 1].label = note.text;
  if (entry.typeWords == 0) return;
  std::string words;
  for (std::uint32_t bit = 1; bit <= entry.typeWords; bit <<= 1U) {
    if ((entry.typeWords & bit) != 0) words.append(";TYPE=").append(typeWordText(bit));
  }
  if (entry.parameters != kNone) {
    const auto& kept = *unmodelled_[entry.parameters].text();
    words += readKeptDetail(kept)->said;
    unmodelled_[entry.parameters] = KeptDetail{entry.property, entry.entry, words}.text();
  } else {
    unmodelled_.emplace_back(KeptDetail{entry.property, entry.entry, words}.text());
  }
}

}  // namespace ox::vcard
