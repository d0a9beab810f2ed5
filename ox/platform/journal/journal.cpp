#include "ox/platform/journal/journal.hpp"

#include <iterator>
#include <utility>

#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/journal/store_journal.hpp"

namespace ox::journal {
namespace {

// How many changes are read at a time.
constexpr std::size_t kChangesOfPart = 256;

StoreJournal& storeJournal() {
  return contactSource().journal();
}

}  // namespace

StoreMoment moment() {
  return storeJournal().moment();
}

std::vector<JournalCommand> commands(std::size_t atMost) {
  return storeJournal().commands(atMost);
}

std::vector<JournalChange> historyOf(const RecordKey& record, std::size_t atMost) {
  return storeJournal().historyOf(record, atMost);
}

PastRecordAnswer recordAt(const RecordKey& record, std::int64_t at) {
  return storeJournal().recordAt(record, at);
}

std::vector<RemovedRecord> removedRecords(std::size_t atMost) {
  return storeJournal().removedRecords(atMost);
}

UndoReport undo(std::optional<std::int64_t> number) {
  return storeJournal().takeBack(number, StoreJournal::Last::Command);
}

UndoReport redo() {
  return storeJournal().takeBack(std::nullopt, StoreJournal::Last::TakingBack);
}

JournalBounds bounds() {
  return storeJournal().bounds();
}

void setBounds(const JournalBounds& bounds) {
  storeJournal().setBounds(bounds);
}

ChangesSince::ChangesSince(const StoreMoment& moment) : ChangesSince(JournalPlace{moment, 0, 0}) {}

ChangesSince::ChangesSince(const JournalPlace& place) : place_(place), readTo_(place) {}

std::optional<JournalChange> ChangesSince::next() {
  if (read_.empty() && !startAnew_) {
    auto part = storeJournal().read(readTo_, kChangesOfPart);
    startAnew_ = part.startAnew;
    readTo_ = part.next;
    std::ranges::move(part.changes, std::back_inserter(read_));
    if (read_.empty()) place_ = readTo_;
  }
  if (read_.empty()) return std::nullopt;
  auto change = std::move(read_.front());
  read_.pop_front();
  place_ = change.behind;
  return change;
}

}  // namespace ox::journal
