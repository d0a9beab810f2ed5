#include "ox/OxAddressBookSDK/tags/tag_file.hpp"

#include <algorithm>
#include <cassert>
#include <exception>
#include <utility>

#include "ox/OxAddressBookSDK/tags/tag_schema.hpp"
#include "ox/base/sqlite/error.hpp"
#include "ox/records/merge.hpp"

namespace ox {
namespace {

std::string selectTags() {
  return std::string("SELECT tag, ")
      .append(kIsSoundTag)
      .append(" FROM tag WHERE manager = ?1 AND person = ?2 ORDER BY position");
}
std::string selectTagsUnder() {
  return std::string("SELECT person, tag, ")
      .append(kIsSoundTag)
      .append(" FROM tag WHERE manager = ?1 ORDER BY person, position");
}
constexpr std::string_view kAny = "SELECT 1 FROM tag LIMIT 1";
constexpr std::string_view kInsert =
    "INSERT OR IGNORE INTO tag (manager, person, tag, position) VALUES (?1, ?2, ?3, ?4)";
// Far from the end of what a number holds, whatever a damaged file says.
constexpr std::string_view kLastPosition =
    "SELECT min(ifnull(max(position), 0), 0x3FFFFFFFFFFFFFFF) FROM tag "
    "WHERE manager = ?1 AND person = ?2";
constexpr std::string_view kDeleteOne =
    "DELETE FROM tag WHERE manager = ?1 AND person = ?2 AND tag = ?3";
constexpr std::string_view kDeleteAll = "DELETE FROM tag WHERE manager = ?1 AND person = ?2";
constexpr std::string_view kManagers =
    "SELECT DISTINCT manager FROM tag WHERE person = ?1 ORDER BY manager";
constexpr std::string_view kFollowed = "SELECT number, act, sound FROM followed WHERE store = ?1";
constexpr std::string_view kSetFollowed =
    "INSERT OR REPLACE INTO followed (store, number, act) VALUES (?1, ?2, ?3)";

void requireSound(const sqlite::Statement& row, int column) {
  if (row.integer(column) != 0) return;
  throw FailureError(FailureKind::Corrupt, "a row of the tag file is damaged");
}

}  // namespace

TagFile::TagFile(const std::string& path) : TagFile(openTagFile(path)) {}

TagFile::TagFile(sqlite::Connection connection)
    : connection_(std::move(connection)),
      select_(connection_.prepare(selectTags())),
      any_(connection_.prepare(kAny)),
      insert_(connection_.prepare(kInsert)),
      lastPosition_(connection_.prepare(kLastPosition)),
      deleteOne_(connection_.prepare(kDeleteOne)),
      deleteAll_(connection_.prepare(kDeleteAll)),
      managers_(connection_.prepare(kManagers)),
      followed_(connection_.prepare(kFollowed)),
      setFollowed_(connection_.prepare(kSetFollowed)) {}

bool TagFile::isEmpty() {
  const sqlite::StatementScope scope(any_);
  return !any_.step();
}

TagFile::Tags TagFile::tags(std::string_view manager, std::string_view person) {
  const sqlite::StatementScope scope(select_);
  select_.bindText(1, manager).bindText(2, person);
  Tags result;
  while (select_.step()) {
    requireSound(select_, 1);
    result.emplace_back(select_.text(0));
  }
  return result;
}

// Seldom asked, so not kept prepared.
TagFile::TagsOfPersons TagFile::tagsUnder(std::string_view manager) {
  auto rows = connection_.prepare(selectTagsUnder());
  rows.bindText(1, manager);
  TagsOfPersons result;
  Tags* ofPerson = nullptr;
  std::string person;
  while (rows.step()) {
    requireSound(rows, 2);
    if (ofPerson == nullptr || person != rows.text(0)) {
      person = rows.text(0);
      ofPerson = &result[person];
    }
    ofPerson->emplace_back(rows.text(1));
  }
  return result;
}

void TagFile::add(std::string_view manager, std::string_view person, std::string_view tag) {
  leaveMoment();
  sqlite::Transaction transaction(connection_);
  append(manager, person, std::span(&tag, 1));
  transaction.commit();
}

// The last position is asked for once: it takes a look at every tag of the person.
template <typename Tag>
void TagFile::append(std::string_view manager, std::string_view person, std::span<Tag> tags) {
  std::int64_t position = 0;
  {
    const sqlite::StatementScope scope(lastPosition_);
    lastPosition_.bindText(1, manager).bindText(2, person).step();
    position = lastPosition_.integer(0);
  }
  for (const auto& tag : tags) {
    insert_.bindText(1, manager).bindText(2, person).bindText(3, tag).bind(4, ++position).run();
  }
}

void TagFile::remove(std::string_view manager, std::string_view person, std::string_view tag) {
  leaveMoment();
  deleteOne_.bindText(1, manager).bindText(2, person).bindText(3, tag).run();
}

void TagFile::replace(std::string_view manager, std::string_view person, const Tags& tags) {
  leaveMoment();
  sqlite::Transaction transaction(connection_);
  deleteAll_.bindText(1, manager).bindText(2, person).run();
  append(manager, person, std::span(tags));
  transaction.commit();
}

std::vector<std::string> TagFile::managersOf(std::string_view person) {
  const sqlite::StatementScope scope(managers_);
  managers_.bindText(1, person);
  std::vector<std::string> result;
  while (managers_.step()) result.emplace_back(managers_.text(0));
  return result;
}

std::optional<TagFile::Followed> TagFile::followedAct(std::string_view store) {
  const sqlite::StatementScope scope(followed_);
  followed_.bindBlob(1, store);
  if (!followed_.step()) return std::nullopt;
  requireSound(followed_, 2);
  return Followed{followed_.integer(0), std::string(followed_.blob(1))};
}

std::int64_t TagFile::lastFollowed(std::string_view store) {
  const auto act = followedAct(store);
  return act ? act->number : 0;
}

std::int64_t TagFile::followed(std::string_view store, const std::vector<TagAct>& acts,
                               const LastAct& lastAct) {
  const auto act = followedAct(store);
  if (!act) return 0;
  const auto& [number, name] = *act;
  const auto same = std::ranges::find(acts, number, &TagAct::number);
  if (same != acts.end() && same->name != name) return 0;
  // Behind all of the acts: others have gone ahead, or the store has gone back. It is asked only
  // now, for whoever went ahead has committed the act before the tags followed it.
  return number > acts.back().number && number > lastAct() ? 0 : number;
}

void TagFile::follow(std::string_view store, const std::vector<TagAct>& acts,
                     const LastAct& lastAct) {
  assert(std::ranges::is_sorted(acts, {}, &TagAct::number));
  if (acts.empty()) return;
  const auto last = acts.back().number;
  if (followed(store, acts, lastAct) >= last) return;
  leaveMoment();
  sqlite::Transaction transaction(connection_);
  const auto number = followed(store, acts, lastAct);
  if (number >= last) return;
  for (const auto& act : acts) {
    if (act.number <= number) continue;
    for (const auto& change : act.changes) merge(change);
  }
  setFollowed_.bindBlob(1, store).bind(2, last).bindBlob(3, acts.back().name).run();
  transaction.commit();
}

void TagFile::merge(const TagChange& change) {
  const auto present = tags(change.manager, change.person);
  const auto merged = mergedTags(change.before, change.after, present);
  if (merged == present) return;
  // Most changes only append.
  const bool appends =
      merged.size() > present.size() && std::equal(present.begin(), present.end(), merged.begin());
  if (!appends) deleteAll_.bindText(1, change.manager).bindText(2, change.person).run();
  append(change.manager, change.person, std::span(merged).subspan(appends ? present.size() : 0));
}

TagFile::Tags TagFile::problems() {
  Tags result;
  auto check = connection_.prepare("PRAGMA integrity_check(100)");
  while (check.step()) {
    if (check.text(0) != "ok") result.emplace_back(check.text(0));
  }
  auto tags = connection_.prepare(
      std::string("SELECT person FROM tag WHERE ").append(kIsSoundTag).append(" IS NOT 1"));
  while (tags.step()) {
    result.push_back("a tag of " + std::string(tags.text(0)) + " is damaged");
  }
  auto followed = connection_.prepare("SELECT number FROM followed WHERE sound IS NOT 1");
  while (followed.step()) {
    result.emplace_back("how far the tags have followed a store is damaged");
  }
  return result;
}

void TagFile::stayAtMoment() {
  if (!snapshot_) snapshot_.emplace(connection_);
}

void TagFile::sync() {
  leaveMoment();
  struct Normal {
    sqlite::Connection& connection;
    ~Normal() {
      try {
        connection.execute("PRAGMA synchronous = NORMAL");
      } catch (const std::exception&) {
        // It stays fully synced: slower, not less safe.
      }
    }
  } const normal{connection_};
  connection_.execute("PRAGMA synchronous = FULL");
  sqlite::Transaction transaction(connection_);
  // The version written anew, so that there is something to commit.
  connection_.execute("PRAGMA user_version = 3");
  transaction.commit();
}

}  // namespace ox
