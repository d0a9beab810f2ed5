#include "ox/platform/store/journal/command_list.hpp"

#include <unordered_set>

namespace ox {
namespace {

// The rows of the records that a command touched.
class Touched {
 public:
  void take(JournalRows& journal, const JournalAct& act) {
    added_ += static_cast<std::uint64_t>(act.row.nextRecord - act.firstRecord);
    ranges_.emplace_back(act.firstRecord, act.row.nextRecord);
    journal.changes(act.firstChange, act.row.nextChange, [&](const JournalRow& change) {
      take(change);
      return true;
    });
  }

  void countIn(JournalCommand& command) const {
    command.added = added_ + restored_.size();
    command.removed = removed_.size();
    for (const auto row : changed_) {
      if (!removed_.contains(row) && !restored_.contains(row) && !isAdded(row)) ++command.changed;
    }
  }

 private:
  void take(const JournalRow& change) {
    switch (change.what()) {
      case ChangeKind::Removed:
        removed_.insert(change.record());
        return;
      case ChangeKind::Restored:
        restored_.insert(change.record());
        return;
      case ChangeKind::ContainerAdded:
      case ChangeKind::ContainerRemoved:
        return;
      case ChangeKind::Tags:
        if (change.record() == 0) return;
        break;
      default:
        break;
    }
    changed_.insert(change.record());
  }

  bool isAdded(std::int64_t row) const {
    for (const auto& [first, end] : ranges_) {
      if (row >= first && row < end) return true;
    }
    return false;
  }

  std::uint64_t added_ = 0;
  std::vector<std::pair<std::int64_t, std::int64_t>> ranges_;
  std::unordered_set<std::int64_t> changed_;
  std::unordered_set<std::int64_t> removed_;
  std::unordered_set<std::int64_t> restored_;
};

}  // namespace

bool isOfNobody(JournalRows& journal, const JournalAct& act) {
  return act.row.nextRecord == act.firstRecord && act.row.nextChange == act.firstChange &&
         !journal.origin(act.origin).origin.undoes;
}

TakenBack::TakenBack(JournalRows& journal) {
  const auto commands = journal.takingBack();
  // From the newest on: whether a command is in effect is told by later ones alone.
  for (auto command = commands.rbegin(); command != commands.rend(); ++command) {
    const auto [number, undone] = *command;
    if (undone == 0) {
      final_.insert(number);
      continue;
    }
    undone_.emplace(number, undone);
    if (!by_.contains(number)) by_.emplace(undone, number);
  }
}

std::optional<std::int64_t> TakenBack::by(std::int64_t command) const {
  const auto found = by_.find(command);
  return found != by_.end() ? std::optional(found->second) : std::nullopt;
}

bool TakenBack::isUndo(std::int64_t command) const {
  bool isUndo = false;
  for (auto found = undone_.find(command); found != undone_.end();
       found = undone_.find(found->second)) {
    isUndo = !isUndo;
  }
  return isUndo;
}

std::optional<std::int64_t> TakenBack::lastUndo() const {
  for (auto command = undone_.rbegin(); command != undone_.rend(); ++command) {
    if (isUndo(command->first) && !by(command->first)) return command->first;
  }
  return std::nullopt;
}

std::vector<JournalCommand> latestCommands(ChangeReader& reader, std::size_t atMost) {
  auto& journal = reader.journal();
  const TakenBack takenBack(journal);
  std::vector<JournalCommand> commands;
  std::unordered_set<std::int64_t> met;
  if (atMost == 0) return commands;
  journal.actsDownFrom(INT64_MAX, [&](const JournalAct& act) {
    if (isOfNobody(journal, act)) return true;
    const auto number = reader.commandOf(act);
    if (!met.insert(number).second) return true;
    JournalCommand command;
    command.number = number;
    command.at = act.at;
    command.origin = journal.origin(act.origin).origin;
    command.takenBackBy = takenBack.by(number);
    Touched touched;
    journal.actsDownFrom(act.row.moment.number, [&](const JournalAct& each) {
      if (each.origin == act.origin) touched.take(journal, each);
      return command.origin.together && each.row.moment.number > number;
    });
    touched.countIn(command);
    commands.push_back(std::move(command));
    return commands.size() < atMost;
  });
  return commands;
}

std::optional<std::int64_t> lastCommand(ChangeReader& reader) {
  const TakenBack takenBack(reader.journal());
  std::optional<std::int64_t> last;
  reader.journal().actsDownFrom(INT64_MAX, [&](const JournalAct& act) {
    if (isOfNobody(reader.journal(), act)) return true;
    const auto number = reader.commandOf(act);
    if (takenBack.takesBack(number) || takenBack.by(number) || takenBack.isFinal(number))
      return true;
    last = number;
    return false;
  });
  return last;
}

}  // namespace ox
