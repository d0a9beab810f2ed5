#include "ox/platform/store/writing/journal_writer.hpp"

#include <algorithm>
#include <cassert>
#include <string>

#include "ox/base/clock.hpp"

namespace ox {
namespace {

// What a row of the journal takes beside its blobs: an estimate.
constexpr std::int64_t kRowBytes = 24;

void bindNumber(sqlite::Statement& statement, int index, const std::optional<std::int64_t>& value) {
  if (value) {
    statement.bind(index, *value);
  } else {
    statement.bindNull(index);
  }
}

std::int64_t bindBytes(sqlite::Statement& statement, int index,
                       const std::optional<std::string_view>& bytes) {
  if (!bytes) {
    statement.bindNull(index);
    return 0;
  }
  statement.bindBlob(index, *bytes);
  return static_cast<std::int64_t>(bytes->size());
}

}  // namespace

void LinksOfGroups::add(std::int64_t group, std::int32_t container, const NumberedLink& link) {
  if (last_ >= groups_.size() || groups_[last_].row != group) {
    const auto [place, isNew] = places_.try_emplace(group, groups_.size());
    if (isNew) groups_.push_back({group, container, {}});
    last_ = place->second;
  }
  groups_[last_].links.push_back(link);
}

void LinksOfGroups::sortByNumber() {
  for (auto& group : groups_) std::ranges::sort(group.links, {}, &NumberedLink::number);
}

JournalWriter::JournalWriter(StoreFile& file, const ActRow& last)
    : file_(file),
      number_(last.moment.number + 1),
      nextChange_(last.nextChange),
      bytes_(last.bytes) {}

void JournalWriter::write(const Change& change) {
  auto& insert = file_.statement(Sql::InsertChange);
  insert.bind(1, nextChange_++).bind(2, static_cast<std::int64_t>(change.what));
  bindNumber(insert, 3, change.record);
  bindNumber(insert, 4, change.container);
  bindNumber(insert, 5, change.other);
  bindNumber(insert, 6, change.place);
  bytes_ += kRowBytes + change.pictureBytes;
  bytes_ += bindBytes(insert, 7, change.before) + bindBytes(insert, 8, change.after);
  if (change.uid != nullptr) change.uid->bindTo(insert, 8);
  insert.run();
}

void JournalWriter::write(ChangeKind what, const LinksOfGroups& links) {
  assert(what == ChangeKind::Linked || what == ChangeKind::Unlinked);
  for (const auto& group : links.groups()) {
    const auto bytes = encodeLinks(group.links);
    Change change{.what = what, .record = group.row, .container = group.container};
    (what == ChangeKind::Linked ? change.after : change.before) = bytes;
    write(change);
    // Each of them has a number of its own.
    nextChange_ += static_cast<std::int64_t>(group.links.size()) - 1;
  }
}

ActRow JournalWriter::writeAct(const Uuid& name, std::int64_t origin, std::int64_t nextRecord,
                               std::int64_t nextLink) {
  const ActRow row{{number_, name}, nextRecord, nextLink, nextChange_, bytes_ + kRowBytes};
  file_.statement(Sql::InsertAct)
      .bind(1, number_)
      .bindBlob(2, {reinterpret_cast<const char*>(name.data()), name.size()})
      .bind(3, millisecondsNow())
      .bind(4, origin)
      .bind(5, row.nextRecord)
      .bind(6, row.nextLink)
      .bind(7, row.nextChange)
      .bind(8, row.bytes)
      .run();
  return row;
}

}  // namespace ox
