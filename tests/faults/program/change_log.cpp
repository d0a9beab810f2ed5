#include "tests/faults/program/change_log.hpp"

#include <cstring>
#include <filesystem>
#include <string_view>

#include "tests/support/call_switch.hpp"
#include "tests/support/store_environment.hpp"
#include "tests/support/struck_run.hpp"

namespace ox::faults {
namespace {

namespace fs = std::filesystem;
namespace words = support::call_switch;

bool isOnDisk(const std::string& name) {
  for (const auto* other : {"home", "data", "prepared"}) {
    if (name.starts_with(other)) return false;
  }
  return !name.ends_with("-shm");
}

const fs::path& folder() {
  return support::StoreEnvironment::instance().folder();
}

std::string nameOf(const std::string& path) {
  return path == folder().string() ? "" : fs::path(path).lexically_relative(folder()).string();
}

// What the switch has written, piece by piece.
class LogReader {
 public:
  explicit LogReader(const std::string& bytes) : rest_(bytes) {}

  bool isAtEnd() const { return rest_.empty(); }

  Event next() {
    const auto what = take(1).front();
    auto name = nameOf(std::string(take(number())));
    const auto place = static_cast<std::int64_t>(number());
    std::string bytes(take(number()));
    if (what == words::kRenamed) bytes = nameOf(bytes);
    return {kindOf(what), std::move(name), place, std::move(bytes)};
  }

 private:
  static Event::Kind kindOf(char what) {
    switch (what) {
      case words::kCreated:
        return Event::Kind::Create;
      case words::kWritten:
        return Event::Kind::Write;
      case words::kResized:
        return Event::Kind::Truncate;
      case words::kSynced:
        return Event::Kind::SyncBytes;
      case words::kFolderSynced:
        return Event::Kind::SyncFolder;
      case words::kRenamed:
        return Event::Kind::Rename;
      default:
        return Event::Kind::Delete;
    }
  }

  std::string_view take(std::size_t size) {
    const auto taken = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return taken;
  }

  std::uint64_t number() {
    std::uint64_t value = 0;
    std::memcpy(&value, take(sizeof value).data(), sizeof value);
    return value;
  }

  std::string_view rest_;
};

}  // namespace

DiskLog filesFound() {
  DiskLog found;
  for (const auto& entry : fs::recursive_directory_iterator(folder())) {
    auto name = nameOf(entry.path().string());
    if (!entry.is_regular_file() || !isOnDisk(name)) continue;
    found.push_back({Event::Kind::Found, std::move(name), 0, support::fileBytes(entry.path())});
  }
  return found;
}

std::pair<support::ProcessResult, DiskLog> runAndLog(const std::vector<std::string>& command,
                                                     DiskLog found) {
  const auto path = (folder() / "home" / "changes").string();
  fs::remove(path);
  auto result = support::runLogged(command, path);
  const auto bytes = support::fileBytes(path);
  for (LogReader reader(bytes); !reader.isAtEnd();) {
    auto event = reader.next();
    if (isOnDisk(event.name)) found.push_back(std::move(event));
  }
  return {std::move(result), std::move(found)};
}

}  // namespace ox::faults
