#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"

#include <chrono>
#include <exception>
#include <string_view>
#include <thread>

#include "ox/OxAddressBookSDK/tags/tag_store.hpp"
#include "ox/OxMacAddressBookSDK/ground/contacts_and_tags.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/pinned_moment.hpp"

namespace ox {
namespace {

class PinnedTags {
 public:
  PinnedTags() { TagStore::shared().pinMoment(); }
  PinnedTags(const PinnedTags&) = delete;
  PinnedTags& operator=(const PinnedTags&) = delete;
  ~PinnedTags() { TagStore::shared().unpinMoment(); }
};

// Whether the tags have followed every act that is seen, and none that is not.
bool tagsAreOfTheMoment() {
  auto& source = containerSource();
  const auto debts = source.tagDebts();
  const std::string_view store(reinterpret_cast<const char*>(debts.store.data()),
                               debts.store.size());
  const auto followed = TagStore::shared().lastFollowed(store);
  return followed <= source.moment().number &&
         (debts.acts.empty() || debts.acts.back().number <= followed);
}

}  // namespace

struct OneMoment::Pinned {
  PinnedMoment contacts;
  PinnedTags tags;
};

// Another process may be between the two files. Tags follow within a millisecond or so; where they
// never do (their file cannot be written, or the store was put back), they are as they are.
OneMoment::OneMoment() {
  constexpr int kTries = 10;
  followTags();
  for (int tries = 1;; ++tries) {
    pinned_ = std::make_unique<Pinned>();
    try {
      containerSource().moment();
      if (tries == kTries || tagsAreOfTheMoment()) return;
    } catch (const std::exception&) {
      return;  // told to whoever reads
    }
    pinned_.reset();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

OneMoment::~OneMoment() = default;

}  // namespace ox
