#include "ox/platform/store/contact_source.hpp"

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <utility>
#include <vector>

#include "ox/base/store_location.hpp"
#include "ox/platform/store/store_source.hpp"

namespace ox {
namespace {

// The installed source. Read on every access to a record, written at start-up.
struct InstalledSource {
  std::mutex mutex;
  std::atomic<ContactSource*> current = nullptr;
  std::vector<std::shared_ptr<ContactSource>> all;  // a source may still be in use when replaced
};

InstalledSource& installedSource() {
  static auto& installed = *new InstalledSource;
  return installed;
}

// The log would stay beside the store otherwise, and whoever copies the store alone would copy less
// than it holds.
void letGoAtExit() {
  if (auto* current = installedSource().current.load(std::memory_order_acquire)) current->letGo();
}

}  // namespace

ContactSource& contactSource() {
  auto& installed = installedSource();
  if (auto* current = installed.current.load(std::memory_order_acquire)) return *current;
  const std::lock_guard lock(installed.mutex);
  if (installed.current == nullptr) {
    settleStoreLocation();
    installed.all.push_back(openStoreSource(contactStore()));
    installed.current = installed.all.back().get();
    std::atexit(letGoAtExit);
  }
  return *installed.current;
}

void installContactSource(std::shared_ptr<ContactSource> source) {
  auto& installed = installedSource();
  const std::lock_guard lock(installed.mutex);
  installed.current = source.get();
  installed.all.push_back(std::move(source));
}

}  // namespace ox
