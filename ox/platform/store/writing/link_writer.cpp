#include "ox/platform/store/writing/link_writer.hpp"

#include <algorithm>
#include <unordered_set>

namespace ox {
namespace {

// The first links, as many as are of one group. One that has a number stands for itself.
LinkWriter::Links firstRun(LinkWriter::Links links) {
  const auto& first = links.front();
  if (first.number) return links.first(1);
  const auto end = std::ranges::find_if(
      links, [&](const auto& link) { return link.number || link.group.row != first.group.row; });
  return links.first(static_cast<std::size_t>(end - links.begin()));
}

}  // namespace

void LinkWriter::deleteLinks(const sqlite::KeyList& numbers) {
  if (!numbers.empty()) file_.statement(Sql::DeleteLinks).bindKeys(1, numbers).run();
}

void LinkWriter::remove(Links links, const Visit& visit) {
  LinksOfGroups removed;
  sqlite::KeyList numbers;
  std::unordered_set<std::int64_t> seen;  // an act may name a link twice
  while (!links.empty()) {
    const auto run = firstRun(links);
    links = links.subspan(run.size());
    sqlite::KeyList children;
    for (const auto& link : run) children.add(link.child.row);
    auto& rows = file_.statement(Sql::LinkNumbers);
    const sqlite::StatementScope scope(rows);
    rows.bind(1, run.front().group.row).bindKeys(2, children);
    while (rows.step()) {
      const auto& link = run[static_cast<std::size_t>(rows.integer(0))];
      const auto number = rows.integer(1);
      if (!seen.insert(number).second) continue;
      numbers.add(number);
      removed.add(link.group.row, link.group.container, {link.child.row, number});
      visit(link);
    }
  }
  deleteLinks(numbers);
  journal_.write(ChangeKind::Unlinked, removed);
}

void LinkWriter::add(Links links, const Rows& rows, const Visit& visit) {
  LinksOfGroups added;
  while (!links.empty()) {
    const auto run = firstRun(links);
    links = links.subspan(run.size());
    const auto numbers = run.front().number ? insertBack(run.front(), rows) : insert(run, rows);
    const auto group = rows.record(run.front().group.row);
    const auto container = rows.container(run.front().group.container);
    for (std::size_t i = 0; i < run.size(); ++i) {
      if (!numbers[i]) continue;
      added.add(group, container, {rows.record(run[i].child.row), *numbers[i]});
      visit(run[i]);
    }
  }
  journal_.write(ChangeKind::Linked, added);
}

// New links of one group. Those that were there already leave their numbers unused.
LinkWriter::Added LinkWriter::insert(Links run, const Rows& rows) {
  sqlite::KeyList children;
  for (const auto& link : run) children.add(rows.record(link.child.row));
  const auto first = nextLink_;
  const auto count = static_cast<std::int64_t>(run.size());
  file_.statement(Sql::InsertLinks)
      .bind(1, first)
      .bind(2, rows.record(run.front().group.row))
      .bindKeys(3, children)
      .run();
  nextLink_ += count;
  Added numbers(run.size());
  if (file_.connection().changes() == count) {
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      numbers[i] = first + static_cast<std::int64_t>(i);
    }
    return numbers;
  }
  auto& inserted = file_.statement(Sql::LinksFromTo);
  const sqlite::StatementScope scope(inserted);
  inserted.bind(1, first).bind(2, nextLink_);
  while (inserted.step()) {
    const auto number = inserted.integer(0);
    numbers[static_cast<std::size_t>(number - first)] = number;
  }
  return numbers;
}

LinkWriter::Added LinkWriter::insertBack(const Act::ChangedLink& link, const Rows& rows) {
  const auto number = numberOf(link);
  file_.statement(Sql::InsertLink)
      .bind(1, number)
      .bind(2, rows.record(link.group.row))
      .bind(3, rows.record(link.child.row))
      .run();
  if (file_.connection().changes() == 0) return {std::nullopt};
  nextLink_ = std::max(nextLink_, number + 1);
  return {number};
}

// A link that comes back as it was gets its number again, unless a damaged store has given that to
// another one.
std::int64_t LinkWriter::numberOf(const Act::ChangedLink& link) {
  auto& other = file_.statement(Sql::LinkOfNumber);
  const sqlite::StatementScope scope(other);
  other.bind(1, *link.number);
  return other.step() ? nextLink_ : *link.number;
}

// A link between two of them is gone when the second one is asked.
bool LinkWriter::removeLinksOf(const std::vector<RecordEntry>& records) {
  LinksOfGroups removed;
  const bool hadParents = take(records, Side::Parents, removed);
  std::vector<RecordEntry> groups;
  std::ranges::copy_if(records, std::back_inserter(groups),
                       [](const RecordEntry& record) { return record.kind == RecordKind::Group; });
  const bool hadChildren = take(groups, Side::Children, removed);
  removed.sortByNumber();
  journal_.write(ChangeKind::Unlinked, removed);
  return hadParents || hadChildren;
}

// Takes the links of one side of these records away.
bool LinkWriter::take(const std::vector<RecordEntry>& records, Side side, LinksOfGroups& taken) {
  if (records.empty()) return false;
  sqlite::KeyList asked;
  asked.reserve(records.size());
  for (const auto& record : records) asked.add(record.row);
  sqlite::KeyList numbers;
  {
    auto& rows =
        file_.statement(side == Side::Parents ? Sql::LinksToParents : Sql::LinksToChildren);
    const sqlite::StatementScope scope(rows);
    rows.bindKeys(1, asked);
    while (rows.step()) {
      const auto link = linkOfRow(rows);
      numbers.add(link.number);
      if (!link.isSound) continue;
      const auto& record = records[static_cast<std::size_t>(rows.integer(4))];
      taken.add(link.parent, record.container, {link.child, link.number});
    }
  }
  deleteLinks(numbers);
  return !numbers.empty();
}

}  // namespace ox
