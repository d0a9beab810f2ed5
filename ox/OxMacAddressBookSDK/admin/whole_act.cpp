#include "ox/OxMacAddressBookSDK/admin/whole_act.hpp"

#include "ox/OxAddressBookSDK/tags/tag_hold.hpp"
#include "ox/platform/store/running_act.hpp"

namespace ox {

struct WholeAct::State {
  RunningAct contacts;
  TagHold tags;
};

WholeAct::WholeAct() : state_(std::make_unique<State>()) {}

WholeAct::~WholeAct() = default;

SavedContactsAndTags WholeAct::save() {
  if (state_->contacts.joinOuter() && state_->tags.joinOuter()) return {{true, {}, {}}, true};
  return saveContactsAndTags();
}

}  // namespace ox
