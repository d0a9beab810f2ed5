#include "tests/kills/killed_run.hpp"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>

#include "tests/support/store_environment.hpp"
#include "tests/support/struck_run.hpp"

namespace ox::kills {
namespace {

using support::StoreEnvironment;

// The folders that the environment has made stay, and the kept files too. The index of the
// write-ahead log is made anew from the log wherever it is missing.
bool isKept(const std::filesystem::path& path) {
  const auto name = path.filename().string();
  return name != "home" && name != "data" && !name.starts_with("prepared") &&
         !name.ends_with("-shm");
}

void copyAll(const std::filesystem::path& from, const std::filesystem::path& to) {
  for (const auto& entry : std::filesystem::directory_iterator(from)) {
    if (!isKept(entry)) continue;
    std::filesystem::copy(entry, to / entry.path().filename(),
                          std::filesystem::copy_options::recursive);
  }
}

}  // namespace

std::string Moment::text() const {
  return (how == How::Half ? "half through write " : "before change ") + std::to_string(change);
}

support::ProcessResult runUntil(const Moment& moment, const std::vector<std::string>& command) {
  namespace words = support::call_switch;
  const auto blow = moment.how == How::Half
                        ? support::Blow{words::kWrites, words::kDeathWithin, moment.change}
                        : support::Blow{words::kChanges, words::kDeath, moment.change};
  return support::runStruck(command, blow).result;
}

support::ProcessResult runAlive(const std::vector<std::string>& command) {
  return runUntil({How::Before, 0}, command);
}

bool wasKilled(const support::ProcessResult& result) {
  return result.exitCode == 128 + SIGKILL;
}

PreparedFolder::PreparedFolder(const std::string& name) : kept_(support::temporaryPath(name)) {
  std::filesystem::remove_all(kept_);
  std::filesystem::create_directory(kept_);
  copyAll(StoreEnvironment::instance().folder(), kept_);
}

void PreparedFolder::clear() {
  const auto& folder = StoreEnvironment::instance().folder();
  std::vector<std::filesystem::path> old;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    const bool isIndex = entry.path().string().ends_with("-shm");
    if (isIndex || isKept(entry)) old.push_back(entry);
  }
  for (const auto& path : old) std::filesystem::remove_all(path);
}

void PreparedFolder::bringBack() const {
  clear();
  copyAll(kept_, StoreEnvironment::instance().folder());
}

namespace {

// A program under a sanitizer takes ten times as long to start, and each kill starts three: there
// only every so many moments are tried, unless the environment says otherwise.
int momentsInOneStep() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  constexpr int kUsual = 12;
#else
  constexpr int kUsual = 1;
#endif
  const auto* wanted = std::getenv("OX_KILL_STEP");
  return wanted == nullptr ? kUsual : std::max(1, std::atoi(wanted));
}

}  // namespace

int killEverywhere(const std::vector<std::string>& command,
                   const std::function<void(const support::ProcessResult& result)>& attempt) {
  const PreparedFolder prepared;
  int killed = 0;
  for (const auto how : {How::Before, How::Half}) {
    for (Moment moment{how, 1};; moment.change += momentsInOneStep()) {
      SCOPED_TRACE("killed " + moment.text());
      prepared.bringBack();
      const auto result = runUntil(moment, command);
      attempt(result);
      if (testing::Test::HasFailure()) return killed;
      if (!wasKilled(result)) break;
      ++killed;
    }
  }
  prepared.bringBack();
  return killed;
}

}  // namespace ox::kills
