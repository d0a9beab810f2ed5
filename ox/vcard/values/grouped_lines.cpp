#include "ox/vcard/values/grouped_lines.hpp"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "ox/vcard/unmodelled/line_form.hpp"
#include "ox/vcard/values/type_words.hpp"

namespace ox::vcard {
namespace {

struct ByGroup {
  template <typename A, typename B>
  bool operator()(const A& a, const B& b) const {
    return a.key < b.key;
  }
};

// Gives labels to entries. One label serves all entries of its group, as long as the copies stay
// within a bound: a card must not make the memory of many of it.
class Labelling {
 public:
  Labelling(CollectedUnmodelled& unmodelled, std::vector<Problem>& repairs)
      : unmodelled_(unmodelled), repairs_(repairs) {}

  void apply(const GroupedEntry& entry, const GroupNote& note, MultiEntry& held) {
    if (note.text.empty() || !hasRoom(note)) return;
    held.label = note.text;
    if (entry.typeWords != 0) preserveTypeWords(entry);
  }

 private:
  bool hasRoom(const GroupNote& note) {
    constexpr std::size_t kMostShared = 1U << 20U;
    if (note.uses <= 1) return true;
    const bool wasFull = shared_ > kMostShared;
    shared_ += note.text.size();
    if (shared_ <= kMostShared) return true;
    if (!wasFull) repairs_.push_back({note.line, "label too long for all of its group"});
    return false;
  }

  // The label took the place of one that stood for TYPE words: they are parameters now.
  void preserveTypeWords(const GroupedEntry& entry) {
    std::string words;
    for (std::uint32_t bit = 1; bit <= entry.typeWords; bit <<= 1U) {
      if ((entry.typeWords & bit) != 0) words.append(";TYPE=").append(typeWordText(bit));
    }
    if (entry.parameters != GroupedEntry::kNone) {
      assert(entry.parameters < unmodelled_.details.size());
      auto& detail = unmodelled_.details[entry.parameters];
      assert(detail.property == entry.property && detail.entry == entry.entry);
      detail.text.insert(0, words);
    } else {
      unmodelled_.details.push_back(
          {entry.property, entry.entry, DetailKind::Parameters, std::move(words)});
    }
  }

  CollectedUnmodelled& unmodelled_;
  std::vector<Problem>& repairs_;
  std::size_t shared_ = 0;  // bytes of labels beyond the first of each group
};

}  // namespace

void GroupedLines::clear() {
  entries_.clear();
  notes_.clear();
}

std::vector<std::size_t> GroupedLines::entriesIn(std::string_view group,
                                                 PropertyId property) const {
  std::vector<std::size_t> entries;
  for (const auto& each : entries_) {
    if (each.property == property && each.key == group) entries.push_back(each.entry);
  }
  return entries;
}

void GroupedLines::moveLastEntry(PropertyId property, std::size_t last, std::size_t number) {
  for (auto& each : entries_) {
    if (each.property != property || each.entry < number) continue;
    each.entry = each.entry == last ? number : each.entry + 1;
  }
}

void GroupedLines::join(CollectedValues& values, CollectedUnmodelled& unmodelled,
                        std::vector<Problem>& repairs) {
  if (!notes_.empty()) {
    std::stable_sort(notes_.begin(), notes_.end(), ByGroup{});
    dropReplacedNotes(repairs);
    Labelling labels(unmodelled, repairs);
    for (const auto& entry : entries_) {
      auto& entries = values.multi(entry.property).entries;
      assert(entry.entry >= 1 && entry.entry <= entries.size());
      const auto [first, last] = std::equal_range(notes_.begin(), notes_.end(), entry, ByGroup{});
      std::for_each(first, last, [&](GroupNote& note) {
        if (note.property != 0 && note.property != entry.property) return;
        ++note.uses;
        auto& held = entries[entry.entry - 1];
        if (note.apply != nullptr) {
          note.apply(note.text, held.value);
        } else {
          labels.apply(entry, note, held);
        }
      });
    }
    for (auto& note : notes_) {
      if (note.uses == 0) unmodelled.lines.push_back(std::move(note.preserved));
    }
  }
  if (!entries_.empty()) preserveGroups(unmodelled);
}

// Of several labels of one group the last counts, and of several country codes.
void GroupedLines::dropReplacedNotes(std::vector<Problem>& repairs) {
  const std::string* labelled = nullptr;
  const std::string* coded = nullptr;
  std::for_each(notes_.rbegin(), notes_.rend(), [&](GroupNote& note) {
    const auto*& later = note.apply == nullptr ? labelled : coded;
    note.isReplaced = later != nullptr && *later == note.key;
    later = &note.key;
  });
  for (const auto& note : notes_) {
    if (!note.isReplaced) continue;
    repairs.push_back(
        {note.line,
         std::string("a later ").append(note.name).append(" of the group takes its place")});
  }
  std::erase_if(notes_, [](const GroupNote& note) { return note.isReplaced; });
}

void GroupedLines::preserveGroups(CollectedUnmodelled& unmodelled) const {
  std::unordered_set<std::string> groups;
  for (const auto& line : unmodelled.lines) {
    const auto group = lineNameOf(line).group;
    if (isName(group)) groups.insert(groupKey(group));
  }
  if (groups.empty()) return;
  for (const auto& entry : entries_) {
    if (!groups.contains(entry.key)) continue;
    unmodelled.details.push_back({entry.property, entry.entry, DetailKind::Group, entry.group});
  }
}

}  // namespace ox::vcard
