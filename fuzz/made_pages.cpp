#include "fuzz/made_pages.hpp"

#include <algorithm>

#include "ox/base/checksum.hpp"
#include "ox/base/sqlite/plain_file.hpp"
#include "ox/base/sqlite/row_sum.hpp"

namespace ox::fuzz {
namespace {

constexpr std::size_t kFileHeaderBytes = 100;
constexpr std::size_t kHeaderBytes = 8;
constexpr char kLeafTable = 13;
constexpr char kLeafIndex = 10;
constexpr char kInteriorTable = 5;

void put16(std::string& bytes, std::size_t at, std::size_t value) {
  bytes[at] = static_cast<char>(value >> 8U);
  bytes[at + 1] = static_cast<char>(value);
}

void put32(std::string& bytes, std::size_t at, std::size_t value) {
  put16(bytes, at, value >> 16U);
  put16(bytes, at + 2, value);
}

std::string bigEndian(std::uint64_t value, std::size_t bytes) {
  std::string text;
  for (auto shift = 8 * bytes; shift > 0; shift -= 8)
    text += static_cast<char>(value >> (shift - 8));
  return text;
}

// Of one to nine bytes, of which all but the ninth hold seven bits.
std::string varint(std::uint64_t value) {
  std::string text;
  if (value >> 56U != 0) {
    text += static_cast<char>(value);
    value >>= 8U;
    while (text.size() < 9) {
      text.insert(text.begin(), static_cast<char>(0x80U | (value & 0x7FU)));
      value >>= 7U;
    }
    return text;
  }
  text += static_cast<char>(value & 0x7FU);
  while ((value >>= 7U) != 0) text.insert(text.begin(), static_cast<char>(0x80U | (value & 0x7FU)));
  return text;
}

// An integer in as few bytes as it takes: its type, and the bytes.
std::pair<std::uint64_t, std::string> storedInteger(std::int64_t value) {
  if (value == 0 || value == 1) return {value == 0 ? 8 : 9, {}};
  const std::size_t sizes[] = {1, 2, 3, 4, 6};
  for (std::uint64_t type = 0; type < 5; ++type) {
    const auto bound = std::int64_t{1} << (8 * sizes[type] - 1);
    if (value >= -bound && value < bound) {
      return {type + 1, bigEndian(static_cast<std::uint64_t>(value), sizes[type])};
    }
  }
  return {6, bigEndian(static_cast<std::uint64_t>(value), 8)};
}

std::string recordOf(const MadePages::Row& row) {
  using Type = MadePages::Column::Type;
  std::string types;
  std::string values;
  for (const auto& column : row) {
    if (column.type == Type::Integer) {
      const auto [type, bytes] = storedInteger(column.integer);
      types += varint(type);
      values += bytes;
    } else if (column.type == Type::Null) {
      types += varint(0);
    } else {
      types += varint(2 * column.bytes.size() + (column.type == Type::Text ? 13 : 12));
      values += column.bytes;
    }
  }
  const auto size = types.size() + 1;  // of the head, which tells its own size
  return varint(size > 127 ? size + 1 : size) + types + values;
}

// The row's number stands in place of the first column of a table.
MadePages::Column sumOf(const MadePages::Row& row, std::int64_t number) {
  using Type = MadePages::Column::Type;
  std::vector<sqlite::SummedColumn> columns;
  for (const auto& column : row) {
    const bool isNumber = number != 0 && columns.empty() && column.type == Type::Null;
    const bool isBytes = column.type == Type::Text || column.type == Type::Blob;
    columns.push_back({static_cast<int>(isNumber ? Type::Integer : column.type),
                       isBytes    ? checksum64(column.bytes)
                       : isNumber ? static_cast<std::uint64_t>(number)
                                  : static_cast<std::uint64_t>(column.integer)});
  }
  return {Type::Integer, sqlite::rowSum(columns)};
}

// The sum of a log, over words of the least significant byte first, as its header then says.
class LogSum {
 public:
  void add(std::string_view bytes) {
    for (std::size_t at = 0; at < bytes.size(); at += 8) {
      first_ += __builtin_bswap32(sqlite::bigEndian32(bytes, at)) + second_;
      second_ += __builtin_bswap32(sqlite::bigEndian32(bytes, at + 4)) + first_;
    }
  }
  std::string bytes() const { return bigEndian(first_, 4) + bigEndian(second_, 4); }

 private:
  std::uint32_t first_ = 0;
  std::uint32_t second_ = 0;
};

}  // namespace

MadePages::MadePages() {
  auto& first = pages_.emplace_back(kPageBytes, '\0');
  first.replace(0, 16, "SQLite format 3\0", 16);
  put16(first, 16, kPageBytes);
  first[kFileHeaderBytes] = kLeafTable;
  put16(first, kFileHeaderBytes + 5, kPageBytes);
}

std::size_t MadePages::addPage(char type) {
  auto& page = pages_.emplace_back(kPageBytes, '\0');
  page[0] = type;
  put16(page, 5, kPageBytes);
  return pages_.size() - 1;
}

void MadePages::addToTable(std::int64_t number, Row row, Sum sum) {
  if (sum == Sum::Of) row.push_back(sumOf(row, number));
  addCell(table_, kLeafTable, varint(static_cast<std::uint64_t>(number)), recordOf(row));
}

void MadePages::addToIndex(Row row, Sum sum) {
  if (sum == Sum::Of) row.push_back(sumOf(row, 0));
  addCell(index_, kLeafIndex, {}, recordOf(row));
}

// How much of a record stands on the page itself is told by the form of the file.
void MadePages::addCell(std::size_t& page, char type, std::string_view start,
                        const std::string& record) {
  const std::size_t most = type == kLeafTable ? kPageBytes - 35 : (kPageBytes - 12) * 64 / 255 - 23;
  const std::size_t least = (kPageBytes - 12) * 32 / 255 - 23;
  auto here = record.size();
  if (here > most) {
    here = least + (here - least) % (kPageBytes - 4);
    if (here > most) here = least;
  }
  auto cell = varint(record.size()).append(start).append(record, 0, here);
  if (here < record.size())
    cell += bigEndian(addOverflow(std::string_view(record).substr(here)), 4);
  const auto hasRoom = [&] {
    const auto& bytes = pages_[page];
    return sqlite::bigEndian16(bytes, 5) >=
           kHeaderBytes + 2 * (sqlite::bigEndian16(bytes, 3) + std::size_t{1}) + cell.size();
  };
  if (page == 0 || !hasRoom()) page = addPage(type);
  auto& bytes = pages_[page];
  const auto cells = sqlite::bigEndian16(bytes, 3);
  const auto at = sqlite::bigEndian16(bytes, 5) - cell.size();
  bytes.replace(at, cell.size(), cell);
  put16(bytes, kHeaderBytes + 2 * std::size_t{cells}, at);
  put16(bytes, 3, cells + std::size_t{1});
  put16(bytes, 5, at);
}

std::uint32_t MadePages::addOverflow(std::string_view rest) {
  const auto first = static_cast<std::uint32_t>(pages_.size() + 1);
  while (!rest.empty()) {
    const auto here = rest.substr(0, kPageBytes - 4);
    rest.remove_prefix(here.size());
    auto& page = pages_.emplace_back(kPageBytes, '\0');
    if (!rest.empty()) put32(page, 0, pages_.size() + 1);
    page.replace(4, here.size(), here);
  }
  return first;
}

void MadePages::addFree() {
  auto& page = pages_.emplace_back(kPageBytes, '\0');
  put32(page, 0, firstFree_);
  firstFree_ = static_cast<std::uint32_t>(pages_.size());
  auto& first = pages_.front();
  put32(first, 32, firstFree_);
  put32(first, 36, sqlite::bigEndian32(first, 36) + std::size_t{1});
}

void MadePages::addInterior() {
  auto& page = pages_[addPage(kInteriorTable)];
  std::size_t cells = 0;
  auto at = kPageBytes;
  for (std::size_t number = 2; number < pages_.size() && 14 + 2 * cells + 5 < at; ++number) {
    if (pages_[number - 1][0] != kLeafTable) continue;
    at -= 5;
    put32(page, at, number);
    put16(page, 12 + 2 * cells++, at);
    put32(page, 8, number);
  }
  put16(page, 3, cells);
}

std::string MadePages::file() const {
  std::string bytes;
  for (const auto& page : pages_) bytes += page;
  return bytes;
}

std::string MadePages::log(std::size_t pages, bool isCommitted) const {
  const std::string marks = "saltsalt";
  auto bytes = bigEndian(0x377F0682, 4) + bigEndian(3007000, 4) + bigEndian(kPageBytes, 4) +
               bigEndian(0, 4) + marks;
  LogSum sum;
  sum.add(bytes);
  bytes += sum.bytes();
  pages = std::min(pages, pages_.size());
  for (std::size_t i = pages_.size() - pages; i < pages_.size(); ++i) {
    const bool isLast = i + 1 == pages_.size();
    const auto head =
        bigEndian(i + 1, 4) + bigEndian(isLast && !isCommitted ? 0 : pages_.size(), 4);
    sum.add(head);
    sum.add(pages_[i]);
    bytes.append(head).append(marks).append(sum.bytes()).append(pages_[i]);
  }
  return bytes;
}

}  // namespace ox::fuzz
