// The lists of books that the process keeps, each built by the first call that needs it.
#include <mutex>
#include <optional>

#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/ground/progress.hpp"
#include "ox/OxMacAddressBookSDK/registry/builds.hpp"
#include "ox/base/failures.hpp"
#include "ox/base/serial_queue.hpp"

namespace ox {
namespace {

using registry::Books;

// A list that is kept for the life of the process, with the first thing that failed while it was
// built: whoever is given the list later learns why something may be missing in it.
struct Kept {
  BookList books;
  std::optional<Failure> failure;
};

template <typename Build>
Kept keptOf(Build build) {
  const failures::Watch watch(failures::Watch::Over::OwnWork);
  Kept kept{BookList(build()), std::nullopt};
  for (auto& seen : watch.all()) {
    if (!kept.failure && !seen.isRefusal()) kept.failure = std::move(seen);
  }
  return kept;
}

const BookList& givenAgain(const Kept& kept) {
  if (kept.failure) failures::notice(*kept.failure);
  return kept.books;
}

// The host's own failures are not those of the list that is being built.
ProgressCallback aside(const ProgressCallback& progress) {
  if (!progress) return nullptr;
  return [&progress](double percent, bool finished) {
    const failures::Aside aside;
    progress(percent, finished);
  };
}

// The list that both progress operations share. Touched by tasks on the registry queue only; kept
// when its build has succeeded, so a build that threw leaves it absent.
std::optional<Kept>& gAddressArray() {
  static auto& g_AddressArray = *new std::optional<Kept>;
  return g_AddressArray;
}

// A list that one operation keeps for itself, built by the first call that succeeds.
class KeptList {
 public:
  BookList get(Books (*build)()) {
    const std::lock_guard lock(mutex_);
    if (list_) return givenAgain(*list_);
    list_ = keptOf(build);
    return list_->books;
  }

 private:
  std::mutex mutex_;
  std::optional<Kept> list_;
};

// The shared list, built by `build` if it is absent; the result is a copy, the caller's own. What
// `last` or the build throws leaves an absent list absent.
template <typename Build, typename Last>
BookList sharedList(Build build, Last last) {
  BookList result;
  OxMacAddressBook::addressArrayQueue().sync([&] {
    auto& list = gAddressArray();
    if (list) givenAgain(*list);
    const auto built = list ? *list : keptOf(build);
    last();
    list = built;
    result = built.books.copy();
  });
  return result;
}

}  // namespace

BookList OxMacAddressBook::addressBookArray() {
  if (SystemVersionAbove10_11()) return addressBookArrayWithProgressBlock(nullptr);
  static auto& adArray = *new KeptList;
  return adArray.get(registry::booksByAccountIds);
}

BookList OxMacAddressBook::addressBookArrayWithProgressBlock(const ProgressCallback& progress) {
  return sharedList(
      [&progress] {
        return registry::booksByRecords(LocalBookRule::LocalBook, registry::Caches::Fill,
                                        aside(progress));
      },
      [&progress] { progress::report(progress, progress::kDone, true); });
}

BookList OxMacAddressBook::addressBookArrayWithProgressBlock2(const ProgressCallback& progress) {
  return sharedList([&progress] { return registry::booksByContainers(aside(progress)); }, [] {});
}

BookList OxMacAddressBook::addressBookArray2() {
  static auto& adArray = *new KeptList;
  return adArray.get([] {
    return registry::booksByRecords(LocalBookRule::LocalOrICloudBook, registry::Caches::Leave,
                                    nullptr);
  });
}

BookList OxMacAddressBook::addressBookArray3() {
  static auto& adArray = *new KeptList;
  return adArray.get(registry::booksByPreloadedContainers);
}

}  // namespace ox
