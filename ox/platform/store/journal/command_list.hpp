#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ox/platform/store/journal/change_reader.hpp"

namespace ox {

// Which commands take which ones back, and whether they still do: one that was taken back itself
// does not. As of when it is made.
class TakenBack {
 public:
  explicit TakenBack(JournalRows& journal);

  // The command that has taken this one back and is in effect.
  std::optional<std::int64_t> by(std::int64_t command) const;
  // Whether it takes back a command that takes nothing back itself, or one that undid such a taking
  // back, and so on: true for an undo, false for a redo and any other command.
  bool isUndo(std::int64_t command) const;
  bool takesBack(std::int64_t command) const { return undone_.contains(command); }
  // Whether it cannot be taken back at all.
  bool isFinal(std::int64_t command) const { return final_.contains(command); }
  // The last undo that is in effect.
  std::optional<std::int64_t> lastUndo() const;

 private:
  std::map<std::int64_t, std::int64_t> undone_;  // what each takes back
  std::unordered_map<std::int64_t, std::int64_t> by_;
  std::unordered_set<std::int64_t> final_;
};

// What was noted of accounts that are in step with others, and nothing besides, is no command of
// anybody: there is nothing to see of it among the contacts, and nothing to take back.
bool isOfNobody(JournalRows& journal, const JournalAct& act);

// The commands with the latest acts, the newest first.
std::vector<JournalCommand> latestCommands(ChangeReader& reader, std::size_t atMost);

// The last command that takes nothing back and is in effect.
std::optional<std::int64_t> lastCommand(ChangeReader& reader);

}  // namespace ox
