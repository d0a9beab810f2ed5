#include "ox/OxMacAddressBookSDK/admin/store_problems.hpp"

#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/base/store_location.hpp"
#include "ox/platform/store/upkeep/check.hpp"

namespace ox {

std::vector<std::string> problemsOfStoreAndTags() {
  auto problems = storeProblems(contactStorePath());
  for (auto& problem : OxTagManager::problems()) problems.push_back(std::move(problem));
  return problems;
}

}  // namespace ox
