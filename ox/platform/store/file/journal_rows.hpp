#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ox/platform/store/file/store_file.hpp"
#include "ox/platform/store/values/journal_row.hpp"
#include "ox/platform/store/values/origin.hpp"
#include "ox/records/link_list.hpp"

namespace ox {

// The journal's last row, or that of an act of the same number; missing in a damaged store, or
// where the journal does not reach back to it.
std::optional<ActRow> lastAct(StoreFile& file);
std::optional<ActRow> actOfNumber(StoreFile& file, std::int64_t number);

// An act of the journal, and where its additions and changes begin.
struct JournalAct {
  ActRow row;
  std::int64_t at = 0;
  std::int64_t origin = 0;
  std::int64_t firstRecord = 0;
  std::int64_t firstChange = 0;
};

struct JournalOrigin {
  Origin origin;
  std::int64_t firstAct = 0;
};

// A row of the journal as `SELECT *` gives it; ChangeKind tells what its columns hold. Borrowed
// until the next row, as its bytes are, which are only read when they are asked for.
class JournalRow {
 public:
  static constexpr int kColumns = 10;

  explicit JournalRow(const sqlite::Statement& row) : row_(row) {}
  ChangeKind what() const { return static_cast<ChangeKind>(row_.integer(1)); }
  std::int64_t id() const { return row_.integer(0); }
  std::int64_t record() const { return row_.integer(2); }  // 0: none; so is other
  std::int32_t container() const { return static_cast<std::int32_t>(row_.integer(3)); }
  std::int64_t other() const { return row_.integer(4); }
  std::int64_t place() const { return row_.integer(5); }
  std::string_view before() const { return row_.blob(6); }
  std::string_view after() const { return row_.blob(7); }
  // The identifier of a removed record.
  RecordKey key() const { return keyOfColumn(row_, 7); }
  bool isSound() const {
    return row_.integer(9) != 0 && isKnown(row_.integer(1)) &&
           mayBeIn(row_.integer(3), what(), record());
  }
  // Whether changes of that kind are about a container, whose row `record` is then.
  static bool isOfContainer(ChangeKind what) {
    return what == ChangeKind::ContainerAdded || what == ChangeKind::ContainerRemoved;
  }
  // Whether a change of that kind can be in that container, or about it; 0: in none.
  static bool mayBeIn(std::int64_t container, ChangeKind what, std::int64_t record);
  // Whether that number is a ChangeKind: a larger one must not pass for what its last byte is.
  static bool isKnown(std::int64_t what) {
    return what >= static_cast<std::int64_t>(ChangeKind::Values) &&
           what <= static_cast<std::int64_t>(ChangeKind::Tags);
  }
  void requireSound() const;  // throws DamagedRow
  // Whether it is Linked or Unlinked, and what it tells then; throws DamagedLinks.
  bool isOfLinks() const;
  NumberedLinks links() const;

 private:
  const sqlite::Statement& row_;
};

// Reads the journal of one store file, which it borrows. The oldest act that is kept only tells
// where the next one begins and counts as not there. What was asked in two steps is of one moment
// only inside of a transaction; nobody believes it otherwise. Throws sqlite::Error and DamagedRow.
class JournalRows {
 public:
  explicit JournalRows(StoreFile& file) : file_(file) {}

  std::optional<JournalAct> act(std::int64_t number);
  // The last act at or before that time, also the one that counts as not there otherwise; missing
  // when the journal begins later.
  std::optional<ActRow> actAt(std::int64_t milliseconds);
  // Whether that act, or the one that counts as not there otherwise, bears that name.
  bool knows(const StoreMoment& moment);
  // Each of these goes on until the visitor answers false.
  using VisitAct = std::function<bool(const JournalAct&)>;
  void actsFrom(std::int64_t number, const VisitAct& visit);
  void actsDownFrom(std::int64_t number, const VisitAct& visit);
  using VisitChange = std::function<bool(const JournalRow&)>;
  void changes(std::int64_t from, std::int64_t end, const VisitChange& visit);
  void changesDown(std::int64_t from, std::int64_t end, const VisitChange& visit);

  // The row that tells of the change of that number, or, when there is none, a row before it: a row
  // of links tells of many.
  std::int64_t rowOf(std::int64_t change);

  // Read once; the origin of no act is an empty one.
  const JournalOrigin& origin(std::int64_t row);
  // Every command that takes another one back: its number, and that of the other one.
  std::vector<std::pair<std::int64_t, std::int64_t>> takingBack();

 private:
  StoreFile& file_;
  sqlite::Statement act_;  // prepared when first used: each change that is told asks for its act
  std::unordered_map<std::int64_t, JournalOrigin> origins_;
};

}  // namespace ox
