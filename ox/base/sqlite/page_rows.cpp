#include "ox/base/sqlite/page_rows.hpp"

#include <algorithm>
#include <array>
#include <bit>

#include "ox/base/checksum.hpp"
#include "ox/base/sqlite/row_sum.hpp"

namespace ox::sqlite {
namespace {

constexpr std::size_t kFileHeaderBytes = 100;
constexpr std::size_t kLeafHeaderBytes = 8;
constexpr unsigned char kLeafTable = 13;
constexpr unsigned char kLeafIndex = 10;
// A row of an index stands on one page only, and may stand on one that leads to others.
constexpr unsigned char kInteriorIndex = 2;
constexpr std::size_t kInteriorHeaderBytes = 12;

// A page belongs to one row at most, but what is damaged may lead to it as well. Without a bound
// every byte of every page could have the whole file read.
constexpr std::uint8_t kMostReadings = 8;

std::size_t headOf(std::uint32_t page) {
  return page == 1 ? kFileHeaderBytes : 0;
}

std::size_t headerBytesOf(unsigned char type) {
  return type == kInteriorIndex ? kInteriorHeaderBytes : kLeafHeaderBytes;
}

// A number of one to nine bytes, of which all but the ninth hold seven bits; moves on behind it.
std::optional<std::uint64_t> takeVarint(std::string_view& bytes) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < 9 && i < bytes.size(); ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    if (i == 8) {
      value = value << 8U | byte;
    } else {
      value = value << 7U | (byte & 0x7FU);
      if ((byte & 0x80U) != 0) continue;
    }
    bytes.remove_prefix(i + 1);
    return value;
  }
  return std::nullopt;
}

std::int64_t integerOf(std::string_view bytes) {
  std::uint64_t value = 0;
  if (!bytes.empty() && (static_cast<unsigned char>(bytes[0]) & 0x80U) != 0) value = ~value;
  for (const char byte : bytes) value = value << 8U | static_cast<unsigned char>(byte);
  return std::bit_cast<std::int64_t>(value);
}

// How many bytes a value of that type takes; missing for a type that there is not.
std::optional<std::uint64_t> sizeOfType(std::uint64_t type) {
  constexpr std::array<std::uint64_t, 10> kSizes = {0, 1, 2, 3, 4, 6, 8, 8, 0, 0};
  if (type < kSizes.size()) return kSizes[type];
  if (type < 12) return std::nullopt;
  return (type - 12) / 2;
}

PageRow::Column columnOf(std::uint64_t type, std::string_view bytes) {
  switch (type) {
    case 0:
      return {};
    case 7:
      return {PageRow::Type::Real, 0, {}};
    case 8:
    case 9:
      return {PageRow::Type::Integer, static_cast<std::int64_t>(type - 8), {}};
    default:
      if (type < 7) return {PageRow::Type::Integer, integerOf(bytes), {}};
      return {type % 2 == 0 ? PageRow::Type::Blob : PageRow::Type::Text, 0, bytes};
  }
}

// What stands in a record before its values: its own size, and the types of the columns.
struct Head {
  std::size_t bytes = 0;
  std::string_view types;
};

// Missing when it does not end within these bytes.
std::optional<Head> headIn(std::string_view record) {
  auto types = record;
  const auto bytes = takeVarint(types);
  const auto taken = record.size() - types.size();
  if (!bytes || *bytes > record.size() || *bytes < taken) return std::nullopt;
  const auto size = static_cast<std::size_t>(*bytes);
  return Head{size, types.substr(0, size - taken)};
}

// Whether a record that begins so can be of that size. No row of ours has so many columns that its
// head goes on elsewhere.
bool canBeOf(std::uint64_t size, std::string_view begun) {
  auto head = headIn(begun);
  if (!head) return false;
  std::uint64_t told = head->bytes;
  while (!head->types.empty() && told <= size) {
    const auto type = takeVarint(head->types);
    const auto bytes = type ? sizeOfType(*type) : std::nullopt;
    if (!bytes) return false;
    told += *bytes;
  }
  return told == size;
}

}  // namespace

std::optional<PageRow> PageRow::of(std::int64_t number, std::string record) {
  PageRow row;
  row.number_ = number;
  row.record_ = std::make_unique<const std::string>(std::move(record));
  const std::string_view all = *row.record_;
  const auto head = headIn(all);
  if (!head) return std::nullopt;
  auto types = head->types;
  auto values = all.substr(head->bytes);
  while (!types.empty()) {
    const auto type = takeVarint(types);
    const auto size = type ? sizeOfType(*type) : std::nullopt;
    if (!size || *size > values.size()) return std::nullopt;
    row.columns_.push_back(columnOf(*type, values.substr(0, static_cast<std::size_t>(*size))));
    values.remove_prefix(static_cast<std::size_t>(*size));
  }
  if (!values.empty() || row.columns_.empty()) return std::nullopt;
  return row;
}

// The number of a row stands beside its columns, and nothing where it belongs.
bool PageRow::hasSumOf(std::size_t columns) const {
  if (columns >= size() || columns > kMostSummedColumns || !is(size() - 1, Type::Integer))
    return false;
  std::array<SummedColumn, kMostSummedColumns> summed;
  for (std::size_t i = 0; i < columns; ++i) {
    const auto& column = columns_[i];
    const bool isNumber = i == 0 && number_ != 0 && column.type == Type::Null;
    const auto type = isNumber ? Type::Integer : column.type;
    const auto integer = isNumber ? number_ : column.integer;
    const bool isBytes = type == Type::Text || type == Type::Blob;
    summed[i] = {static_cast<int>(type),
                 isBytes ? checksum64(column.bytes) : static_cast<std::uint64_t>(integer)};
  }
  return rowSum({summed.data(), columns}) == columns_.back().integer;
}

std::optional<PageRows::Form> PageRows::formOf(std::uint32_t page) {
  const auto bytes = file_.page(page);
  if (!bytes) return std::nullopt;
  const auto head = headOf(page);
  const auto type = static_cast<unsigned char>((*bytes)[head]);
  if (type != kLeafTable && type != kLeafIndex && type != kInteriorIndex) return std::nullopt;
  const auto cells = bigEndian16(*bytes, head + 3);
  if (head + headerBytesOf(type) + 2 * std::size_t{cells} > file_.usableBytes()) {
    return std::nullopt;
  }
  return type == kLeafTable ? Form::Table : Form::Index;
}

bool PageRows::listed(std::uint32_t page, Form form, const Visit& visit) {
  const auto bytes = file_.page(page);
  if (!bytes) return false;
  const auto head = headOf(page);
  const auto cells = bigEndian16(*bytes, head + 3);
  const auto type = static_cast<unsigned char>((*bytes)[head]);
  const std::uint32_t behindPage = type == kInteriorIndex ? 4 : 0;
  bool all = true;
  for (std::size_t i = 0; i < cells; ++i) {
    const auto offset = bigEndian16(*bytes, head + headerBytesOf(type) + 2 * i) + behindPage;
    if (const auto row = rowIn(*bytes, offset, form, Reading::First)) {
      for (const auto further : furtherPages_) overflow_[further] = true;
      visit({page, offset}, *row);
    } else {
      all = false;
    }
  }
  return all;
}

void PageRows::anywhere(std::uint32_t page, const Visit& visit) {
  const auto bytes = file_.page(page);
  if (!bytes) return;
  for (auto offset = static_cast<std::uint32_t>(headOf(page)); offset + 4 <= file_.usableBytes();
       ++offset) {
    if (const auto row = rowIn(*bytes, offset, Form::Table, Reading::First)) {
      visit({page, offset}, *row);
    }
  }
}

std::optional<PageRow> PageRows::at(const RowPlace& place, Form form) {
  const auto bytes = file_.page(place.page);
  return bytes ? rowIn(*bytes, place.offset, form, Reading::Again) : std::nullopt;
}

// What stands on the page itself of a record that goes on elsewhere is told by the form of the
// file: between a least and a most, so that the last page of the rest is filled.
std::optional<PageRow> PageRows::rowIn(const std::string& page, std::uint32_t offset, Form form,
                                       Reading reading) {
  const std::uint64_t usable = file_.usableBytes();
  if (offset >= usable) return std::nullopt;
  auto cell = std::string_view(page).substr(0, static_cast<std::size_t>(usable)).substr(offset);
  const auto size = takeVarint(cell);
  if (!size || *size < 2 || *size > std::uint64_t{file_.count()} * usable) return std::nullopt;
  std::int64_t number = 0;
  if (form == Form::Table) {
    const auto stored = takeVarint(cell);
    if (!stored) return std::nullopt;
    number = std::bit_cast<std::int64_t>(*stored);
  }
  const auto most = form == Form::Table ? usable - 35 : (usable - 12) * 64 / 255 - 23;
  const auto least = (usable - 12) * 32 / 255 - 23;
  auto here = *size;
  if (here > most) {
    here = least + (*size - least) % (usable - 4);
    if (here > most) here = least;
  }
  if (here > cell.size()) return std::nullopt;
  furtherPages_.clear();
  std::string record(cell.substr(0, static_cast<std::size_t>(here)));
  if (here == *size) return PageRow::of(number, std::move(record));
  cell.remove_prefix(static_cast<std::size_t>(here));
  if (cell.size() < 4 || !canBeOf(*size, record)) return std::nullopt;
  auto whole = goneOn(std::move(record), bigEndian32(cell, 0), *size, reading);
  return whole ? PageRow::of(number, std::move(*whole)) : std::nullopt;
}

// Each page of the rest begins with the number of the next. One that leads nowhere was followed by
// the next page of the file more often than not; whether it was, the sum of the row tells.
std::optional<std::string> PageRows::goneOn(std::string begun, std::uint32_t next,
                                            std::uint64_t size, Reading reading) {
  const std::uint64_t onAPage = file_.usableBytes() - 4;
  auto& pages = furtherPages_;
  while (begun.size() < size) {
    if (next == 0 || next > file_.count()) {
      if (pages.empty() || pages.back() == file_.count()) return std::nullopt;
      next = pages.back() + 1;
    }
    if (reading == Reading::First) {
      if (readings_[next] == kMostReadings) return std::nullopt;
      ++readings_[next];
    }
    const auto bytes = file_.page(next);
    if (!bytes) return std::nullopt;
    pages.push_back(next);
    const auto wanted = std::min<std::uint64_t>(size - begun.size(), onAPage);
    begun.append(*bytes, 4, static_cast<std::size_t>(wanted));
    next = bigEndian32(*bytes, 0);
  }
  return begun;
}

}  // namespace ox::sqlite
