// The lists of books that the process keeps, each built by the first call that needs it.
#include <mutex>
#include <optional>

#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "ox/OxMacAddressBookSDK/ground/progress.hpp"
#include "ox/OxMacAddressBookSDK/registry/builds.hpp"
#include "ox/base/serial_queue.hpp"

namespace ox {
namespace {

using registry::Books;

// The list that both progress operations share. Touched by tasks on the registry queue only; kept
// when its build has succeeded, so a build that threw leaves it absent.
std::optional<BookList>& gAddressArray() {
  static auto& g_AddressArray = *new std::optional<BookList>;
  return g_AddressArray;
}

// What is built piece by piece fits together, and the tags have followed.
template <typename Build>
BookList builtAtOneMoment(Build build) {
  const OneMoment moment;
  return BookList(build());
}

// A list that one operation keeps for itself, built by the first call that succeeds.
class KeptList {
 public:
  BookList get(Books (*build)()) {
    const std::lock_guard lock(mutex_);
    if (!list_) {
      list_ = builtAtOneMoment(build);
    }
    return *list_;
  }

 private:
  std::mutex mutex_;
  std::optional<BookList> list_;
};

// The shared list, built by `build` if it is absent; the result is a copy, the caller's own. What
// `last` or the build throws leaves an absent list absent.
template <typename Build, typename Last>
BookList sharedList(Build build, Last last) {
  BookList result;
  OxMacAddressBook::addressArrayQueue().sync([&] {
    auto& list = gAddressArray();
    const auto built = list ? *list : builtAtOneMoment(build);
    last();
    list = built;
    result = built.copy();
  });
  return result;
}

}  // namespace

void registry::refuseWithinDiscovery() {
  // Before that version the list that persons find their book in has no callback.
  if (OxMacAddressBook::SystemVersionAbove10_11()) {
    OxMacAddressBook::addressArrayQueue().refuseFromOwnTask();
  }
}

BookList OxMacAddressBook::addressBookArray() {
  if (SystemVersionAbove10_11()) return addressBookArrayWithProgressBlock(nullptr);
  static auto& adArray = *new KeptList;
  return adArray.get(registry::booksByAccountIds);
}

BookList OxMacAddressBook::addressBookArrayWithProgressBlock(const ProgressCallback& progress) {
  return sharedList(
      [&progress] {
        return registry::booksByRecords(LocalBookRule::LocalBook, registry::Caches::Fill, progress);
      },
      [&progress] { progress::report(progress, progress::kDone, true); });
}

BookList OxMacAddressBook::addressBookArrayWithProgressBlock2(const ProgressCallback& progress) {
  return sharedList([&progress] { return registry::booksByContainers(progress); }, [] {});
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
