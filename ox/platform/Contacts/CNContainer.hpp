#pragma once

#include <memory>

#include "ox/base/export.hpp"
#include "ox/platform/Contacts/CNPredicate.hpp"
#include "ox/platform/store/values/container_info.hpp"

namespace ox {

enum CNContainerType : std::int32_t {
  CNContainerTypeUnassigned = 0,
  CNContainerTypeLocal = 1,
  CNContainerTypeExchange = 2,
  CNContainerTypeCardDAV = 3,
};

// One container (account) as it was when it was asked for. Immutable; equal by identifier.
class OX_EXPORT CNContainer {
 public:
  explicit CNContainer(ContainerPtr info) : info_(std::move(info)) {}

  Text identifier() const { return info_->identifier; }
  Text name() const { return info_->name; }
  std::int32_t type() const { return info_->type; }

  // The container that holds that contact or group, by identifier or as a record at hand; all
  // containers of those identifiers.
  static CNPredicate predicateForContainerOfRecord(const RecordKey& key, RecordKind kind);
  static CNPredicate predicateForContainerOfContactWithIdentifier(TextView identifier);
  static CNPredicate predicateForContainerOfGroupWithIdentifier(TextView identifier);
  static CNPredicate predicateForContainersWithIdentifiers(std::vector<std::string> identifiers);

  friend bool operator==(const CNContainer& a, const CNContainer& b) {
    return a.info_->identifier == b.info_->identifier;
  }

 private:
  ContainerPtr info_;
};

using CNContainerPtr = std::shared_ptr<const CNContainer>;

}  // namespace ox
