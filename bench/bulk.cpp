// How fast is a whole book handed out as the data of a neutral book, or written into a file, and
// taken into an empty one? With the pictures of every twentieth person, and without any.
// Beside it: SQLite alone reading all values and pictures, and as many bytes written into a file;
// and SQLite writing the rows in one commit, as a load does.
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "bench/child.hpp"
#include "bench/figures.hpp"
#include "bench/plain_edits.hpp"
#include "bench/stores.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/admin/written_book.hpp"
#include "ox/base/store_location.hpp"
#include "ox/platform/Contacts/CNContactStore.hpp"

namespace ox::bench {
namespace {

// Waits for the report that is the last one.
class LastReport {
 public:
  void came() {
    const std::lock_guard lock(mutex_);
    came_ = true;
    changed_.notify_one();
  }
  void wait() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return came_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool came_ = false;
};

// In the child: the data goes to the file.
double saveTo(const std::string& path) {
  const auto book = OxMacAddressBook::addressBookArray().element(0);
  book->allPersons();
  LastReport last;
  Data saved;
  const Stopwatch watch;
  book->saveDataBlock([&](bool finished, const Data& data, double) {
    if (!finished) return;
    saved = data;
    last.came();
  });
  last.wait();
  const auto seconds = watch.seconds();
  if (!saved) throw std::runtime_error("no data");
  std::ofstream(path, std::ios::binary) << *saved;
  tellParent("bytes", static_cast<double>(saved->size()));
  return seconds;
}

class OpenFile final : public BookSink {
 public:
  explicit OpenFile(const std::string& path) : file_(path, std::ios::binary) {}
  void append(std::string_view bytes) override {
    file_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes_ += bytes.size();
  }
  void replaceStart(std::string_view bytes) override {
    file_.seekp(0).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }
  std::size_t bytes() const { return bytes_; }

 private:
  std::ofstream file_;
  std::size_t bytes_ = 0;
};

// In the child.
double writeInto(const std::string& path) {
  const auto book = OxMacAddressBook::addressBookArray().element(0);
  book->allPersons();
  const Stopwatch watch;
  OpenFile file(path);
  if (!writeBook(*book, file, {})) throw std::runtime_error("not written");
  const auto seconds = watch.seconds();
  tellParent("bytes", static_cast<double>(file.bytes()));
  return seconds;
}

// In the child: as many bytes as a book's file has, beside it.
double readAndWrite(const std::string& store, const std::string& path) {
  auto left = std::filesystem::file_size(path);
  const auto read = plain::readContent(store);
  const Stopwatch watch;
  OpenFile file(path + ".plain");
  const std::string piece(1U << 18U, 'x');
  for (; left > piece.size(); left -= piece.size()) file.append(piece);
  file.append(std::string_view(piece).substr(0, left));
  return read + watch.seconds();
}

// In the child.
double loadFrom(const std::string& path, std::size_t size) {
  std::ifstream file(path, std::ios::binary);
  const auto data = makeData({std::istreambuf_iterator<char>(file), {}});
  const auto containers = CNContactStore::init()->containersMatchingPredicate_error({}, nullptr);
  const auto book = OxMacAddressBook::initWithContainer(containers.at(0));
  LastReport last;
  const Stopwatch watch;
  book->loadWithData_progressBlock(data, [&](double, bool finished) {
    if (finished) last.came();
  });
  last.wait();
  const auto seconds = watch.seconds();
  if (book->allPersonsCount() != size) throw std::runtime_error("not all loaded");
  tellParent("bytes", static_cast<double>(data->size()));
  return seconds;
}

int measure(std::string_view way, const std::string& path, std::size_t size) {
  const auto store = contactStorePath();
  double seconds = 0;
  if (way == "save") seconds = saveTo(path);
  if (way == "load") seconds = loadFrom(path, size);
  if (way == "write") seconds = writeInto(path);
  if (way == "plain read") seconds = readAndWrite(store, path);
  if (way == "plain write") seconds = plain::fillPersons(store, plain::readRows(path));
  tellSeconds(seconds);
  return 0;
}

Measured inChild(const std::string& store, const std::string& way, const std::string& path,
                 std::size_t size) {
  const auto numbers = runChild(store, {way, path, std::to_string(size)});
  std::string note;
  if (numbers.contains("bytes")) {
    note = std::to_string(static_cast<int>(numbers.at("bytes") / 1e6)) + " MB of data, peak " +
           std::to_string(static_cast<int>(numbers.at("memory") / 1e6)) + " MB";
  }
  return measuredBy(numbers, note);
}

enum class Pictures { With, Without };

const std::string& bookOf(std::size_t size, Pictures pictures) {
  if (pictures == Pictures::With) return localStoreOf(size);
  static auto& stores = *new std::map<std::size_t, std::string>;
  auto& path = stores[size];
  if (path.empty()) {
    const auto made = copyOf(localStoreOf(size));
    plain::removePictures(made);
    path = temporaryPath("unpictured-" + std::to_string(size) + ".db");
    moveStore(made, path);
  }
  return path;
}

// The data of such a book, in a file.
const std::string& dataOf(std::size_t size, Pictures pictures) {
  static auto& files = *new std::map<std::pair<std::size_t, Pictures>, std::string>;
  auto& path = files[{size, pictures}];
  if (path.empty()) {
    const auto& book = bookOf(size, pictures);
    path = book + ".data";
    inChild(book, "save", path, size);
  }
  return path;
}

void addFigures(Pictures pictures) {
  const std::string which = pictures == Pictures::With ? "" : ", unpictured";
  const auto saving = [&](const std::string& name, const std::string& way) -> Way {
    return {name, [=](std::size_t size) {
              const auto path =
                  way == "plain read" ? dataOf(size, pictures) : temporaryPath("saved");
              return inChild(bookOf(size, pictures), way, path, size);
            }};
  };
  addFigure("save a book" + which,
            {saving("saveDataBlock", "save"), saving("writeBook, into a file", "write"),
             saving("plain SQLite, bytes written", "plain read")});
  addFigure("load a book" + which,
            {{"loadWithData_progressBlock",
              [=](std::size_t size) {
                return inChild(copyOf(storeOf(0)), "load", dataOf(size, pictures), size);
              }},
             {"plain SQLite", [=](std::size_t size) {
                return inChild(copyOf(storeOf(0)), "plain write", bookOf(size, pictures), size);
              }}});
}

}  // namespace
}  // namespace ox::bench

int main(int argc, char** argv) {
  using namespace ox::bench;
  if (argc == 5 && std::string_view(argv[1]) == "--child") {
    return measure(argv[2], argv[3], std::stoul(argv[4]));
  }
  return runFigures(argc, argv, [] {
    addFigures(Pictures::With);
    addFigures(Pictures::Without);
  });
}
