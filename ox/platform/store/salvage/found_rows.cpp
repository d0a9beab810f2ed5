#include "ox/platform/store/salvage/found_rows.hpp"

#include <algorithm>
#include <array>
#include <cstring>

#include "ox/base/checksum.hpp"
#include "ox/platform/store/values/journal_row.hpp"
#include "ox/records/property_codec.hpp"

namespace ox {
namespace {

using sqlite::PageRow;
using Type = PageRow::Type;

// Whether it is a row of so many columns, and one more since version 3 of the store, their sum.
bool isOf(const PageRow& row, std::size_t columns) {
  return row.size() == columns || (row.size() == columns + 1 && row.hasSumOf(columns));
}

bool isPositive(const PageRow::Column& column) {
  return column.type == Type::Integer && column.integer > 0;
}

std::optional<RecordKey> keyOf(const PageRow::Column& column) {
  if (column.type == Type::Text && !column.bytes.empty()) return RecordKey::of(column.bytes);
  std::array<std::uint8_t, 16> bytes{};
  if (column.type != Type::Blob || column.bytes.size() != bytes.size()) return std::nullopt;
  std::memcpy(bytes.data(), column.bytes.data(), bytes.size());
  const auto key = RecordKey::fromBytes(bytes);
  return key.isPacked() ? std::optional(key) : std::nullopt;
}

std::optional<ContainerInfo> containerOf(const PageRow& row) {
  const bool fits = isOf(row, 4) && row.is(1, Type::Text) && row.is(2, Type::Text) &&
                    row.is(3, Type::Integer) && !row[1].bytes.empty();
  if (!fits || row[3].integer < 0 || row[3].integer > 3) return std::nullopt;
  return ContainerInfo{std::string(row[1].bytes), std::string(row[2].bytes),
                       static_cast<std::int32_t>(row[3].integer)};
}

std::optional<RecordEntry> recordOf(const PageRow& row) {
  const bool fits = isOf(row, 4) && row.is(2, Type::Integer) && row.is(3, Type::Integer) &&
                    isContainerRow(row[3].integer);
  if (!fits || row[2].integer < 0 || row[2].integer > 1) return std::nullopt;
  const auto key = keyOf(row[1]);
  if (!key) return std::nullopt;
  return RecordEntry{*key, row.number(), static_cast<std::int32_t>(row[3].integer),
                     row[2].integer == 0 ? RecordKind::Person : RecordKind::Group};
}

// The column of a row of values that holds them; missing when it is no such row. Stores of version
// 1 had no column for the picture.
std::optional<std::size_t> valuesColumn(const PageRow& row) {
  const bool begins = row.size() >= 4 && row.size() <= 6 && row.is(0, Type::Null) &&
                      (row.is(1, Type::Text) || row.is(1, Type::Null)) && row.is(2, Type::Integer);
  const std::size_t last = row.size() == 4 ? 3 : 4;
  if (!begins || !row.is(last, Type::Blob)) return std::nullopt;
  const bool picture = last == 3 || row.is(3, Type::Null) || row.is(3, Type::Integer);
  if (row.size() == 6 && !row.hasSumOf(4)) return std::nullopt;
  return picture ? std::optional(last) : std::nullopt;
}

std::optional<PropertyBag> valuesOf(const PageRow& row) {
  const auto column = valuesColumn(row);
  if (!column) return std::nullopt;
  try {
    return decodeProperties(row[*column].bytes);
  } catch (const DamagedProperties&) {
    return std::nullopt;
  }
}

// Whether nothing that only looks like a row can be taken for it.
bool isSummed(const PageRow& row) {
  return row.size() > 1 && row.hasSumOf(row.size() - 1);
}

// Of an account that is in step with a book elsewhere: its login, the book, or one of its cards.
bool isOfSync(const PageRow& row) {
  constexpr std::array<std::size_t, 2> kColumns = {15, 14};
  return std::ranges::any_of(kColumns, [&](std::size_t columns) {
    return row.size() == columns + 1 && row.hasSumOf(columns);
  });
}

bool isPicture(const PageRow& row) {
  return row.size() == 3 && row.is(1, Type::Integer) && row.is(2, Type::Blob) &&
         static_cast<std::int64_t>(checksum64(row[2].bytes)) == row[1].integer;
}

}  // namespace

FoundRows::FoundRows(sqlite::PageFile& file) : file_(file), rows_(file) {
  readListed();
  readDamaged();
}

void FoundRows::readListed() {
  for (std::uint32_t page = 1; page <= file_.count(); ++page) {
    if (file_.isFree(page)) continue;
    const auto form = rows_.formOf(page);
    if (!form) continue;
    const auto trust = file_.isLedTo(page) ? Trust::Most : Trust::Listed;
    const bool whole = rows_.listed(page, *form, [&](const auto& place, const PageRow& row) {
      *form == sqlite::PageRows::Form::Table ? take(trust, place, row) : takeIndexed(row);
    });
    if (!whole) damagedPages_.push_back(page);
  }
}

// A page that others lead to and that lists nothing has lost its head. What stands on it is only
// known by its sum.
void FoundRows::readDamaged() {
  for (std::uint32_t page = 2; page <= file_.count(); ++page) {
    if (!file_.isFree(page) && file_.isLedTo(page) && !rows_.isOverflow(page) &&
        !rows_.formOf(page)) {
      damagedPages_.push_back(page);
    }
  }
  for (const auto page : damagedPages_) {
    rows_.anywhere(page,
                   [&](const auto& place, const PageRow& row) { take(Trust::Least, place, row); });
  }
}

template <typename Value>
void FoundRows::keep(Table<Value>& table, std::int64_t number, Value value, Trust trust) {
  const auto [found, isNew] = table.try_emplace(number, Found<Value>{value, trust});
  if (!isNew && found->second.trust < trust) found->second = {std::move(value), trust};
}

void FoundRows::take(Trust trust, const sqlite::RowPlace& place, const PageRow& row) {
  if (row.number() <= 0 || !row.is(0, Type::Null)) return;
  if (isPicture(row)) return keep(pictures_, row.number(), place, trust);
  if (valuesOf(row)) return keep(contents_, row.number(), place, trust);
  if (trust == Trust::Least && !isSummed(row)) return;
  if (auto record = recordOf(row)) return keep(records_, row.number(), *record, trust);
  if (auto container = containerOf(row)) {
    return keep(containers_, row.number(), std::move(*container), trust);
  }
  if (isOf(row, 3) && isPositive(row[1]) && isPositive(row[2])) {
    return keep(links_, row.number(), {row[1].integer, row[2].integer}, trust);
  }
  if (!takeChange(row) && isOfSync(row)) hasSync_ = true;
}

// The journal tells what was removed, which matters where the list of free pages is damaged.
bool FoundRows::takeChange(const PageRow& row) {
  if (!isOf(row, 8) || !row.is(1, Type::Integer) || !row.is(2, Type::Integer)) return false;
  const auto what = static_cast<ChangeKind>(row[1].integer);
  if (what != ChangeKind::Removed && what != ChangeKind::Restored) return false;
  auto& last = removed_[row[2].integer];
  if (std::abs(last) < row.number()) {
    last = what == ChangeKind::Removed ? row.number() : -row.number();
  }
  return true;
}

void FoundRows::takeIndexed(const PageRow& row) {
  if (row.size() != 2 || !row.is(0, Type::Blob) || !isPositive(row[1])) return;
  if (const auto key = keyOf(row[0])) indexed_.emplace(row[1].integer, *key);
}

bool FoundRows::isGone(std::int64_t row, Trust trust) const {
  if (trust == Trust::Most) return false;
  const auto found = removed_.find(row);
  return found != removed_.end() && found->second > 0;
}

std::map<std::int64_t, ContainerInfo> FoundRows::containers() const {
  std::map<std::int64_t, ContainerInfo> all;
  for (const auto& [row, container] : containers_) all.emplace(row, container.value);
  return all;
}

std::vector<RecordEntry> FoundRows::records() const {
  std::map<std::int64_t, RecordEntry> all;
  for (const auto& [row, record] : records_) {
    if (!isGone(row, record.trust)) all.emplace(row, record.value);
  }
  for (const auto& [row, content] : contents_) {
    if (records_.contains(row) || isGone(row, content.trust)) continue;
    const auto indexed = indexed_.find(row);
    all.emplace(row, RecordEntry{indexed != indexed_.end() ? indexed->second : RecordKey(), row});
  }
  std::vector<RecordEntry> entries;
  entries.reserve(all.size());
  for (const auto& [row, entry] : all) entries.push_back(entry);
  return entries;
}

std::vector<RecordKey> FoundRows::lostRecords() const {
  std::vector<RecordKey> lost;
  for (const auto& [row, key] : indexed_) {
    if (!records_.contains(row) && !contents_.contains(row) && !isGone(row, Trust::Least)) {
      lost.push_back(key);
    }
  }
  std::ranges::sort(lost);
  return lost;
}

std::vector<FoundRows::Link> FoundRows::links() const {
  std::map<std::int64_t, Link> all;
  for (const auto& [number, link] : links_) all.emplace(number, link.value);
  std::vector<Link> links;
  links.reserve(all.size());
  for (const auto& [number, link] : all) links.push_back(link);
  return links;
}

std::optional<FoundRows::Content> FoundRows::content(std::int64_t row) {
  const auto found = contents_.find(row);
  if (found == contents_.end()) return std::nullopt;
  const auto stored = rows_.at(found->second.value);
  auto properties = stored ? valuesOf(*stored) : std::nullopt;
  if (!properties) return std::nullopt;
  const bool isVersion1 = stored->size() == 4;
  return Content{std::move(*properties), isVersion1 ? row : (*stored)[3].integer};
}

std::optional<std::string> FoundRows::picture(std::int64_t row) {
  const auto found = pictures_.find(row);
  const auto stored = found != pictures_.end() ? rows_.at(found->second.value) : std::nullopt;
  if (!stored || !isPicture(*stored)) return std::nullopt;
  return std::string((*stored)[2].bytes);
}

std::uint64_t FoundRows::doubtful() const {
  const auto least = [](const auto& table) {
    return static_cast<std::uint64_t>(std::ranges::count_if(
        table, [](const auto& row) { return row.second.trust == Trust::Least; }));
  };
  return least(contents_) + least(pictures_) + least(records_) + least(links_);
}

}  // namespace ox
