// Damaged stores, read page by page as recovery does: pages made of the rows that an input gives,
// some of them in a log, then with some bytes changed. Of what was not changed everything is found.
#include <cstdint>
#include <map>

#include "fuzz/input.hpp"
#include "fuzz/made_pages.hpp"
#include "fuzz/require.hpp"
#include "fuzz/scratch_file.hpp"
#include "ox/base/checksum.hpp"
#include "ox/base/failure.hpp"
#include "ox/base/sqlite/page_file.hpp"
#include "ox/platform/store/salvage/found_rows.hpp"
#include "ox/records/property_codec.hpp"

namespace {

using namespace ox;
using fuzz::Input;
using fuzz::MadePages;
using Type = MadePages::Column::Type;

MadePages::Column integer(std::int64_t value) {
  return {Type::Integer, value};
}
MadePages::Column text(std::string_view bytes) {
  return {Type::Text, 0, std::string(bytes)};
}
MadePages::Column blob(std::string_view bytes) {
  return {Type::Blob, 0, std::string(bytes)};
}

MadePages::Column any(Input& input) {
  switch (input.byte() % 8) {
    case 0:
    case 1:
    case 2:
      return integer(input.number());
    case 3:
    case 4:
      return text(input.text());
    case 5:
      return blob(input.text());
    case 6:  // over several pages
      return blob(std::string(input.below(2'000), static_cast<char>(input.byte())));
    default:
      return {};
  }
}

// A file that an input tells, and what has to be found in it.
class Store {
 public:
  explicit Store(Input& input) : input_(input) {
    while (const auto what = input_.byte() % 16) add(what);
    const auto inLog = input_.below(8);
    const bool isCommitted = input_.byte() % 4 != 0;
    bytes_ = pages_.file();
    if (inLog > 0) log_ = pages_.log(inLog, isCommitted);
    isWhole_ &= (inLog == 0 || isCommitted) && input_.isEmpty();
    if (input_.byte() % 2 == 0 || log_.empty()) {
      fuzz::patch(bytes_, input_);
    } else {
      fuzz::patch(log_, input_);
    }
  }

  const std::string& bytes() const { return bytes_; }
  const std::string& log() const { return log_; }
  bool isWhole() const { return isWhole_; }
  const std::map<std::int64_t, std::string>& pictures() const { return pictures_; }

 private:
  std::int64_t rowNumber() { return input_.byte() % 16; }
  std::string key() {
    auto bytes = std::string(input_.bytes(2));
    bytes.resize(16, '\x40');
    return bytes;
  }
  MadePages::Sum sum() { return input_.byte() % 4 ? MadePages::Sum::Of : MadePages::Sum::None; }

  void add(int what) {
    const auto number = rowNumber();
    switch (what) {
      case 1:
        return table(number, {{}, text(input_.text()), text("name"), integer(input_.byte() % 5)});
      case 2:
      case 3:
        return table(number, {{}, blob(key()), integer(input_.byte() % 2), integer(rowNumber())});
      case 4:
        return table(number, {{}, text(input_.text()), integer(1), integer(rowNumber())});
      case 5:
      case 6:
        return table(number, {{}, integer(rowNumber()), integer(rowNumber())});
      case 7:
      case 8:
        return addContent(number);
      case 9:
        return addPicture(number);
      case 10:
        return table(number, {{},
                              integer(3 + input_.byte() % 2),
                              integer(rowNumber()),
                              integer(1),
                              {},
                              integer(1),
                              {},
                              blob(key())});
      case 11:
        return pages_.addToIndex({blob(key()), integer(number)}, MadePages::Sum::None);
      case 12:
        return addAny(number);
      case 13:
        return pages_.closePages();
      case 14:
        return pages_.addFree();
      default:
        pages_.addInterior();
        isWhole_ = false;  // of two rows of one number it is not told which one counts
    }
  }

  void table(std::int64_t number, MadePages::Row row) {
    pages_.addToTable(number, std::move(row), sum());
  }

  void addContent(std::int64_t number) {
    PropertyBag values;
    values.set(property_id::kFirst, Object(std::string(input_.text())));
    values.set(property_id::kNote, Object(std::string(input_.below(3'000), 'n')));
    auto bytes = encodeProperties(values);
    if (input_.byte() % 4 == 0) {
      bytes = std::string(input_.text());
      const auto checksum = checksum64(bytes);
      bytes.append(reinterpret_cast<const char*>(&checksum), sizeof checksum);
    }
    const auto picture = rowNumber();
    pages_.addToTable(
        number, {{}, {}, integer(7), picture ? integer(picture) : MadePages::Column(), blob(bytes)},
        MadePages::Sum::None);
  }

  void addPicture(std::int64_t number) {
    std::string bytes(input_.below(4'000), static_cast<char>(input_.byte()));
    bytes += input_.text();
    const auto checksum = static_cast<std::int64_t>(checksum64(bytes));
    pages_.addToTable(number, {{}, integer(checksum), blob(bytes)}, MadePages::Sum::None);
    if (number > 0) pictures_.emplace(number, std::move(bytes));
  }

  void addAny(std::int64_t number) {
    MadePages::Row row;
    for (auto columns = 1 + input_.byte() % 8; columns > 0; --columns) row.push_back(any(input_));
    if (input_.byte() % 2 == 0) return table(number, std::move(row));
    pages_.addToIndex(std::move(row), sum());
  }

  Input& input_;
  MadePages pages_;
  std::string bytes_;
  std::string log_;
  bool isWhole_ = true;
  std::map<std::int64_t, std::string> pictures_;
};

void readAll(FoundRows& found) {
  found.containers();
  found.links();
  found.lostRecords();
  for (const auto& record : found.records()) {
    const auto content = found.content(record.row);
    if (content) found.picture(content->picture);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const auto path = fuzz::scratchPath("contacts.db");
  Input input(data, size);
  const Store store(input);
  fuzz::writeDatabase(path, store.bytes(), store.log());
  try {
    sqlite::PageFile file(path);
    FoundRows found(file);
    readAll(found);
    if (!store.isWhole()) return 0;
    fuzz::require(file.damages().empty() && found.doubtful() == 0);
    for (const auto& [number, picture] : store.pictures()) {
      fuzz::require(found.picture(number) == picture);
    }
  } catch (const FailureError&) {
    fuzz::require(!store.isWhole());
  }
  return 0;
}
