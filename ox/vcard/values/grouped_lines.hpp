#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ox/vcard/lines/problem.hpp"
#include "ox/vcard/unmodelled/collected_unmodelled.hpp"
#include "ox/vcard/values/collected_values.hpp"

namespace ox::vcard {

// An entry whose line belongs to a group ("item1.TEL"), so that a label may stand on another line.
struct GroupedEntry {
  static constexpr auto kNone = static_cast<std::size_t>(-1);

  std::string key;    // of the group, see groupKey
  std::string group;  // as the card writes it
  PropertyId property = 0;
  std::size_t entry = 0;
  std::uint32_t typeWords = 0;     // that its present label stands for
  std::size_t parameters = kNone;  // where the details hold its parameters
};

// A line that says something of the entries of its group: "item1.X-ABLabel".
struct GroupNote {
  std::string key;
  std::string_view name;  // of its property
  // What it does to an entry; null for a label.
  void (*apply)(std::string_view text, Object& value) = nullptr;
  PropertyId property = 0;  // whose entries it serves; 0 for all
  std::string text = {};
  std::string preserved = {};  // the line, should no entry want it
  std::size_t line = 0;
  std::size_t uses = 0;  // entries that it serves
  bool isReplaced = false;
};

// Joins the lines of a card that share a group. Labels and country codes may stand before or after
// the line they belong to, so this is done when all lines are read.
class GroupedLines {
 public:
  void clear();
  void add(GroupedEntry entry) { entries_.push_back(std::move(entry)); }
  void add(GroupNote note) { notes_.push_back(std::move(note)); }
  // The numbers of the entries whose lines belong to that group, as groupKey gives it.
  std::vector<std::size_t> entriesIn(std::string_view group, PropertyId property) const;
  // The last entry of a property has become the one of that number.
  void moveLastEntry(PropertyId property, std::size_t last, std::size_t number);

  // Applies the notes to the entries, preserves those that no entry wants, and notes the group of
  // each entry that shares it with an unmodelled line.
  void join(CollectedValues& values, CollectedUnmodelled& unmodelled,
            std::vector<Problem>& repairs);

 private:
  void dropReplacedNotes(std::vector<Problem>& repairs);
  void preserveGroups(CollectedUnmodelled& unmodelled) const;

  std::vector<GroupedEntry> entries_;
  std::vector<GroupNote> notes_;
};

}  // namespace ox::vcard
