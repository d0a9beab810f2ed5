#include "ox/platform/store/journal/record_history.hpp"

#include <algorithm>
#include <optional>
#include <unordered_set>
#include <utility>

#include "ox/records/property_codec.hpp"

namespace ox {
namespace {

// Whether a row of the journal is about the record; tags may name it by its identifier alone.
bool isAbout(const JournalRow& row, const RecordEntry& record, const std::string& identifier) {
  switch (row.what()) {
    case ChangeKind::ContainerAdded:
    case ChangeKind::ContainerRemoved:
      return false;
    case ChangeKind::Linked:
    case ChangeKind::Unlinked:
      return row.record() == record.row || row.other() == record.row;
    case ChangeKind::Tags:
      return row.record() == record.row ||
             (row.record() == 0 && decodeTagChange(row.before(), row.after()).person == identifier);
    default:
      return row.record() == record.row;
  }
}

// A record on its way into the past.
class Past {
 public:
  Past(ChangeReader& reader, const RecordEntry& record)
      : reader_(reader), record_(record), identifier_(record.key.text()) {
    const auto now = reader.stored().record(record.row);
    isThere_ = now.has_value();
    if (!isThere_) return;
    if (auto content = reader.stored().content(record.row)) {
      properties_ = std::move(content->properties);
      picture_ = content->picture != 0;
    }
    for (const auto group : reader.stored().parents(record.row)) groups_.push_back(group);
  }

  void takeBack(const JournalRow& row) {
    if (!isAbout(row, record_, identifier_)) return;
    switch (row.what()) {
      case ChangeKind::Values:
      case ChangeKind::ValuesAndPicture:
        return takeValuesBack(row);
      case ChangeKind::Removed:
        isThere_ = true;
        properties_ = row.before().empty() ? PropertyBag() : decodeProperties(row.before());
        picture_ = row.other() != 0;
        return;
      case ChangeKind::Restored:
        isThere_ = false;
        return;
      case ChangeKind::Linked:
        std::erase(groups_, row.record());
        return;
      case ChangeKind::Unlinked:
        if (row.other() == record_.row) groups_.push_back(row.record());
        return;
      case ChangeKind::Tags:
        tags_ = decodeTagChange(row.before(), row.after()).before;
        return;
      default:
        return;
    }
  }

  PastRecordAnswer answer(CommittedRecords& committed) {
    PastRecordAnswer answer;
    answer.was = isThere_ ? PastRecordAnswer::Was::There : PastRecordAnswer::Was::NotThere;
    auto& record = answer.record;
    record.key = record_.key;
    record.kind = record_.kind;
    if (const auto container = committed.containers().inRow(record_.container)) {
      record.container = container->identifier;
    }
    record.properties = properties_;
    record.hasPicture = picture_;
    for (const auto row : groups_) {
      if (const auto group = reader_.record(row)) record.groups.push_back(group->key);
    }
    record.tags = tags_;
    return answer;
  }

 private:
  void takeValuesBack(const JournalRow& row) {
    const auto after = decodeProperties(row.after());
    const auto before = decodeProperties(row.before());
    for (const auto& [id, value] : after.entries()) properties_.set(id, PropertyValue());
    for (const auto& [id, value] : before.entries()) properties_.set(id, value);
    if (row.what() == ChangeKind::ValuesAndPicture) picture_ = row.other() != 0;
  }

  ChangeReader& reader_;
  RecordEntry record_;
  std::string identifier_;
  bool isThere_ = false;
  PropertyBag properties_;
  bool picture_ = false;
  std::vector<std::int64_t> groups_;
  std::optional<std::vector<std::string>> tags_;
};

RemovedRecord removedRecordOf(const JournalChange& change) {
  RemovedRecord removed;
  removed.record.key = change.record;
  removed.record.kind = change.recordKind;
  removed.record.properties = change.before;
  removed.record.hasPicture = change.pictureChanged;
  removed.command = change.command;
  removed.at = change.at;
  return removed;
}

}  // namespace

std::vector<JournalChange> historyOf(ChangeReader& reader, const RecordEntry& record,
                                     std::size_t atMost) {
  std::vector<JournalChange> changes;
  const auto identifier = record.key.text();
  reader.journal().changesDown(0, INT64_MAX, [&](const JournalRow& row) {
    if (changes.size() >= atMost) return false;
    if (!isAbout(row, record, identifier)) return true;
    if (const auto act = reader.actOfChange(row.id())) changes.push_back(reader.change(row, *act));
    return true;
  });
  if (changes.size() < atMost) {
    if (const auto act = reader.actOfRecord(record.row)) {
      changes.push_back(reader.addition(record, *act));
    }
  }
  return changes;
}

PastRecordAnswer recordAfter(ChangeReader& reader, CommittedRecords& committed,
                             const RecordEntry& record, const ActRow& act) {
  if (record.row >= act.nextRecord) return {PastRecordAnswer::Was::NotThere, {}};
  Past past(reader, record);
  reader.journal().changesDown(act.nextChange, INT64_MAX, [&](const JournalRow& row) {
    past.takeBack(row);
    return true;
  });
  return past.answer(committed);
}

std::vector<RemovedRecord> removedRecords(ChangeReader& reader, std::size_t atMost) {
  std::vector<RemovedRecord> records;
  std::unordered_set<std::int64_t> met;
  reader.journal().changesDown(0, INT64_MAX, [&](const JournalRow& row) {
    if (records.size() >= atMost) return false;
    if (row.what() != ChangeKind::Removed || !met.insert(row.record()).second) return true;
    if (reader.stored().record(row.record())) return true;
    if (const auto act = reader.actOfChange(row.id())) {
      records.push_back(removedRecordOf(reader.change(row, *act)));
    }
    return true;
  });
  return records;
}

JournalPart partFrom(ChangeReader& reader, const JournalPlace& from, std::size_t atMost) {
  JournalPart part;
  part.next = from;
  auto& journal = reader.journal();
  if (!journal.knows(from.moment)) {
    part.startAnew = true;
    return part;
  }
  const auto room = [&] { return atMost - part.changes.size(); };
  part.isEnd = true;
  journal.actsFrom(from.moment.number + 1, [&](const JournalAct& act) {
    part.isEnd = false;
    auto& place = part.next;
    place.record = std::max(act.firstRecord, place.record);
    for (const auto& record : reader.stored().records(place.record, act.row.nextRecord,
                                                      static_cast<std::int64_t>(room()))) {
      part.changes.push_back(reader.addition(record, act));
      place.record = record.row + 1;
      part.changes.back().behind = place;
    }
    if (room() == 0) return false;
    place.record = act.row.nextRecord;
    journal.changes(std::max(act.firstChange, place.change), act.row.nextChange,
                    [&](const JournalRow& row) {
                      if (room() == 0) return false;
                      part.changes.push_back(reader.change(row, act));
                      place.change = row.id() + 1;
                      part.changes.back().behind = place;
                      return true;
                    });
    if (room() == 0) return false;
    place = {act.row.moment, 0, 0};
    part.isEnd = true;
    return true;
  });
  return part;
}

}  // namespace ox
