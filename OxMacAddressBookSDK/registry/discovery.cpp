#include <mutex>

#include "OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "OxMacAddressBookSDK/registry/builds.hpp"
#include "OxMacAddressBookSDK/registry/progress.hpp"

namespace ox {
namespace {

using registry::Books;

// The list that both progress operations share. Touched by tasks on the registry queue only; kept
// when its build has succeeded, so a build that threw leaves it absent.
BookListPtr& gAddressArray() {
  static auto& g_AddressArray = *new BookListPtr;
  return g_AddressArray;
}

// A list that one operation keeps for itself, built by the first call that succeeds.
class KeptList {
 public:
  BookListPtr get(Books (*build)()) {
    const std::lock_guard lock(mutex_);
    if (!list_) list_ = std::make_shared<const BookList>(build());
    return list_;
  }

 private:
  std::mutex mutex_;
  BookListPtr list_;
};

// The shared list, built by `build` if it is absent; the result is a copy, the caller's own. What
// `last` or the build throws leaves an absent list absent.
template <typename Build, typename Last>
BookListPtr sharedList(Build build, Last last) {
  BookListPtr result;
  OxMacAddressBook::addressArrayQueue().sync([&] {
    auto& list = gAddressArray();
    const auto built = list ? list : std::make_shared<const BookList>(build());
    last();
    list = built;
    result = std::make_shared<const BookList>(*list);
  });
  return result;
}

}  // namespace

BookListPtr OxMacAddressBook::addressBookArray() {
  if (SystemVersionAbove10_11()) return addressBookArrayWithProgressBlock(nullptr);
  static auto& adArray = *new KeptList;
  return adArray.get(registry::booksByAccountIds);
}

BookListPtr OxMacAddressBook::addressBookArrayWithProgressBlock(const ProgressCallback& progress) {
  return sharedList(
      [&progress] {
        return registry::booksByRecords(LocalBookRule::LocalBook, registry::Caches::Fill, progress);
      },
      [&progress] { progress::report(progress, progress::kDone, true); });
}

BookListPtr OxMacAddressBook::addressBookArrayWithProgressBlock2(const ProgressCallback& progress) {
  return sharedList([&progress] { return registry::booksByContainers(progress); }, [] {});
}

BookListPtr OxMacAddressBook::addressBookArray2() {
  static auto& adArray = *new KeptList;
  return adArray.get([] {
    return registry::booksByRecords(LocalBookRule::LocalOrICloudBook, registry::Caches::Leave,
                                    nullptr);
  });
}

BookListPtr OxMacAddressBook::addressBookArray3() {
  static auto& adArray = *new KeptList;
  return adArray.get(registry::booksByPreloadedContainers);
}

}  // namespace ox
