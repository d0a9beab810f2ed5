#include "ox/platform/store/journal/record_history.hpp"

#include <algorithm>
#include <optional>
#include <unordered_set>
#include <utility>

#include "ox/records/property_codec.hpp"

namespace ox {
namespace {

// Whether a row of the journal is about the record; tags may name it by its identifier alone. Which
// links of a row are: see linksAbout.
bool isAbout(const JournalRow& row, const RecordEntry& record, const std::string& identifier) {
  switch (row.what()) {
    case ChangeKind::ContainerAdded:
    case ChangeKind::ContainerRemoved:
      return false;
    case ChangeKind::Tags:
      return row.record() == record.row ||
             (row.record() == 0 && decodeTagChange(row.before(), row.after()).person == identifier);
    default:
      return row.record() == record.row;
  }
}

// What a row tells of the links of a record, as a group or in one.
NumberedLinks linksAbout(const JournalRow& row, const RecordEntry& record) {
  auto links = row.links();
  if (row.record() != record.row) {
    std::erase_if(links, [&](const auto& link) { return link.child != record.row; });
  }
  return links;
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
    if (row.isOfLinks()) return takeLinksBack(row);
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
  // Those of what stands in it, as a group, are not asked for.
  void takeLinksBack(const JournalRow& row) {
    if (row.record() == record_.row || linksAbout(row, record_).empty()) return;
    if (row.what() == ChangeKind::Linked) {
      std::erase(groups_, row.record());
    } else {
      groups_.push_back(row.record());
    }
  }

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
    const auto links = linksAbout(row, record);
    if (links.empty() && (row.isOfLinks() || !isAbout(row, record, identifier))) return true;
    const auto act = reader.actOfChange(row.id());
    if (!act) return true;
    if (!row.isOfLinks()) changes.push_back(reader.change(row, *act));
    for (auto link = links.rbegin(); link != links.rend() && changes.size() < atMost; ++link) {
      changes.push_back(reader.change(row, *act, *link));
    }
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

namespace {

// Appends what a row tells behind the place, as far as there is room, and moves the place on. False
// when there is no room for more.
bool takeRow(ChangeReader& reader, const JournalRow& row, const JournalAct& act, std::size_t atMost,
             JournalPart& part) {
  auto& place = part.next;
  const auto take = [&](std::int64_t number, JournalChange change) {
    place.change = number + 1;
    change.behind = place;
    part.changes.push_back(std::move(change));
  };
  auto number = row.id();
  if (!row.isOfLinks()) {
    if (part.changes.size() >= atMost) return false;
    if (number >= place.change) take(number, reader.change(row, act));
    return true;
  }
  for (const auto& link : row.links()) {
    if (part.changes.size() >= atMost) return false;
    if (number >= place.change) take(number, reader.change(row, act, link));
    ++number;
  }
  return true;
}

}  // namespace

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
  bool isFirst = true;
  journal.actsFrom(from.moment.number + 1, [&](const JournalAct& act) {
    if (std::exchange(isFirst, false)) reader.beginAt(act.firstChange);
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
    journal.changes(std::max(act.firstChange, journal.rowOf(place.change)), act.row.nextChange,
                    [&](const JournalRow& row) { return takeRow(reader, row, act, atMost, part); });
    if (room() == 0) return false;
    place = {act.row.moment, 0, 0};
    part.isEnd = true;
    return true;
  });
  return part;
}

}  // namespace ox
