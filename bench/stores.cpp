#include "bench/stores.hpp"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>
#include <utility>

#include "bench/contacts.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/transfer/importer.hpp"

namespace ox::bench {
namespace {

constexpr std::array kContainers = {"_local:ABAccount", "bench-1:ABAccount", "bench-2:ABAccount",
                                    "bench-3:ABAccount"};

class TemporaryFolder {
 public:
  TemporaryFolder() {
    auto name = (std::filesystem::temp_directory_path() / "ox_bench_XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = name;
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

std::string writeFile(const std::string& name, const std::string& bytes) {
  auto path = temporaryPath(name);
  std::ofstream file(path, std::ios::binary);
  file << bytes;
  if (!file.flush()) throw std::runtime_error("cannot write " + path);
  return path;
}

void addContainers(ContactSource& source) {
  SaveRequest request;
  for (std::size_t i = 1; i < kContainers.size(); ++i) {
    request.newContainers.push_back({kContainers[i], "Account " + std::to_string(i), 3});
  }
  if (!source.execute(request)) throw std::runtime_error(request.reason);
}

std::string makeStore(std::size_t persons) {
  auto path = temporaryPath("store-" + std::to_string(persons) + ".db");
  addContainers(*openStoreSource(path));
  const auto share = persons / kContainers.size();
  for (std::size_t i = 0; i < kContainers.size() && share > 0; ++i) {
    const auto cards = writeFile("share.vcf", contactCards(share, kSeed + i));
    importInto(path, kContainers[i], cards, share);
  }
  return path;
}

}  // namespace

std::string temporaryPath(const std::string& name) {
  static const TemporaryFolder folder;
  return (folder.path() / name).string();
}

const std::string& cardFile(std::size_t count) {
  static std::map<std::size_t, std::string> files;
  auto& path = files[count];
  if (path.empty()) {
    path = writeFile("cards-" + std::to_string(count) + ".vcf", contactCards(count));
  }
  return path;
}

const std::string& storeOf(std::size_t persons) {
  static std::map<std::size_t, std::string> stores;
  auto& path = stores[persons];
  if (path.empty()) path = makeStore(persons);
  return path;
}

const std::string& localStoreOf(std::size_t persons) {
  static std::map<std::size_t, std::string> stores;
  auto& path = stores[persons];
  if (!path.empty()) return path;
  path = temporaryPath("local-" + std::to_string(persons) + ".db");
  importInto(path, kContainers[0], cardFile(persons), persons);
  // Lets go of the file: whoever opens it next finds it whole, without a log beside it.
  installContactSource(openStoreSource(path));
  return path;
}

std::string copyOf(const std::string& store) {
  auto path = temporaryPath("copy.db");
  removeStore(path);
  std::filesystem::copy_file(store, path);
  return path;
}

void moveStore(const std::string& from, const std::string& to) {
  for (const char* ending : {"", "-wal"}) {
    if (std::filesystem::exists(from + ending)) {
      std::filesystem::rename(from + ending, to + ending);
    }
  }
  std::filesystem::remove(from + "-shm");
}

void removeStore(const std::string& path) {
  for (const char* ending : {"", "-wal", "-shm", ".find", ".tags", ".tags-wal", ".tags-shm"}) {
    std::filesystem::remove(path + ending);
  }
}

void importInto(const std::string& store, const std::string& container, const std::string& cards,
                std::size_t added) {
  installContactSource(openStoreSource(store));
  const auto report = vcard::importFiles({cards}, container, {});
  if (!report.failure.empty()) throw std::runtime_error(report.failure);
  if (report.added != added || report.skipped + report.added != report.cards) {
    throw std::runtime_error("added " + std::to_string(report.added) + " of " +
                             std::to_string(report.cards));
  }
}

}  // namespace ox::bench
