// Tag files: made of the bytes of an input, a sound one with some bytes changed, or one whose rows
// the input tells, with sums that fit. Refused, or read and written without anything but a failure
// that is told; what is read of it as a whole is what is read of each person.
#include "ox/OxAddressBookSDK/tags/tag_file.hpp"

#include <algorithm>
#include <array>
#include <cstdint>

#include "fuzz/input.hpp"
#include "fuzz/lean_sqlite.hpp"
#include "fuzz/require.hpp"
#include "fuzz/scratch_file.hpp"
#include "ox/OxAddressBookSDK/tags/tag_schema.hpp"
#include "ox/OxAddressBookSDK/tags/tag_table.hpp"
#include "ox/base/failure.hpp"

namespace {

using namespace ox;
using Tags = TagFile::Tags;

// Into rows that are there already as into none.
void fill(TagFile& file) {
  file.add("m", "p", "one");
  file.replace("m", "p", {"two", "one"});
  file.add("m", "q", "three");
  file.add("n", "p", "four");
  file.follow("store", {{1, "act", {{"m", "p", {"one"}, {"five"}}}}}, [] { return 1; });
}

void read(TagFile& file, const AllTags& all) {
  for (const auto& [whose, tags] : all) {
    fuzz::require(file.tags(whose.first, whose.second) == tags);
    const auto managers = file.managersOf(whose.second);
    fuzz::require(std::ranges::find(managers, whose.first) != managers.end());
  }
}

// Opened, and then as long as nothing fails.
void tryFile(const std::string& path, bool isErased) {
  isTagFile(path);
  isEmptyDatabase(path);
  TagFile file(path);
  const auto isSound = file.problems().empty();
  const auto all = allTagsIn(path);
  if (isSound) read(file, all);
  file.stayAtMoment();
  file.tags("m", "p");
  fill(file);
  file.remove("m", "p", "two");
  file.lastFollowed("store");
  file.sync();
  if (isErased) eraseTagsIn(path, "p");
}

// One file for all runs, each of which begins without a row.
class Rows {
 public:
  Rows() : path_(fuzz::scratchPath("rows")), file_(made(path_)), database_(opened(path_)) {}

  void run(fuzz::Input& input) {
    {
      sqlite::Transaction transaction(database_);
      database_.execute("DELETE FROM tag; DELETE FROM followed");
      isPlain_ = true;
      while (input.byte() % 4 != 0) put(input);
      transaction.commit();
    }
    if (input.byte() % 16 == 15) {  // it opens the file once more
      const auto all = allTagsIn(path_);
      if (isPlain_) read(file_, all);
      file_.problems();
    }
    while (!input.isEmpty()) act(input);
  }

 private:
  static TagFile made(const std::string& path) {
    fuzz::writeDatabase(path, {});
    return TagFile(path);
  }
  static sqlite::Connection opened(const std::string& path) {
    sqlite::Connection database(path, sqlite::Connection::Mode::ReadWrite);
    database.execute("PRAGMA synchronous=OFF; PRAGMA wal_autocheckpoint=64");
    return database;
  }

  void put(fuzz::Input& input) {
    const bool isTag = input.byte() % 4 != 0;
    auto& row = isTag ? tag_ : followed_;
    const sqlite::StatementScope scope(row);
    const int columns = isTag ? 4 : 3;
    std::array<std::string, 4> texts;
    for (int i = 1; i <= columns; ++i) {
      auto& text = texts[static_cast<std::size_t>(i) - 1];
      switch (input.byte() % 4) {
        case 0:
          isPlain_ &= i == 4 || !isTag;
          row.bind(i, input.number());
          break;
        case 1:
          isPlain_ = false;
          text = input.text();
          row.bindBlob(i, text);
          break;
        default:
          text = input.text();
          row.bindText(i, text);
      }
    }
    row.step();
  }

  // A text that another tool has stored as something else is another tag.
  void require(bool holds) const { fuzz::require(holds || !isPlain_); }

  void act(fuzz::Input& input) {
    const std::string manager(input.text());
    const std::string person(input.text());
    const std::string tag(input.text());
    switch (input.byte() % 4) {
      case 0:
        file_.add(manager, person, tag);
        require(std::ranges::count(file_.tags(manager, person), tag) == 1);
        break;
      case 1:
        file_.remove(manager, person, tag);
        require(std::ranges::count(file_.tags(manager, person), tag) == 0);
        break;
      case 2:
        file_.replace(manager, person, {tag, tag + "x"});
        require(file_.tags(manager, person) == Tags{tag, tag + "x"});
        break;
      default: {
        const auto number = input.number();
        file_.follow(manager, {{number, tag, {{manager, person, {tag}, {person}}}}},
                     [&] { return input.number(); });
        require(file_.lastFollowed(manager) >= number);
      }
    }
  }

  std::string path_;
  TagFile file_;
  sqlite::Connection database_;
  bool isPlain_ = true;  // every column is of the type that we write
  sqlite::Statement tag_ = database_.prepare(
      "INSERT OR REPLACE INTO tag(manager, person, tag, position) VALUES(?1, ?2, ?3, ?4)");
  sqlite::Statement followed_ =
      database_.prepare("INSERT OR REPLACE INTO followed(store, number, act) VALUES(?1, ?2, ?3)");
};

const std::string& soundBytes() {
  static const auto bytes = [] {
    const auto path = fuzz::scratchPath("sound");
    fuzz::writeDatabase(path, {});
    {
      TagFile file(path);
      fill(file);
    }
    return fuzz::readScratch(path);
  }();
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  fuzz::makeSqliteLean();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const auto path = fuzz::scratchPath("tags");
  try {
    // A file that has to be opened takes many times as long as one that stands open.
    const auto form = input.byte();
    switch (form % 64) {
      case 0:
        fuzz::writeDatabase(path, input.rest());
        tryFile(path, false);
        break;
      case 1: {
        auto bytes = soundBytes();
        fuzz::patch(bytes, input);
        fuzz::writeDatabase(path, bytes);
        tryFile(path, form >= 0x80);
        break;
      }
      default:
        static Rows rows;
        rows.run(input);
    }
  } catch (const FailureError&) {
  }
  return 0;
}
