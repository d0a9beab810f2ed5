#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/base/record_key.hpp"
#include "ox/platform/Contacts/CNPredicate.hpp"
#include "ox/records/property_bag.hpp"

namespace ox {

// A group as the container database gave it, or one that is being made.
class OX_EXPORT CNGroup {
 public:
  virtual ~CNGroup() = default;

  Text identifier() const { return key_.text(); }
  const RecordKey& key() const { return key_; }
  // Missing when the group has none.
  Text name() const;
  // The UID of the card it came from is kept here too.
  const PropertyBag& properties() const { return properties_; }

  static CNPredicate predicateForGroupsInContainerWithIdentifier(TextView identifier);
  static CNPredicate predicateForGroupsWithIdentifiers(std::vector<std::string> identifiers);

 protected:
  friend class CNContactStore;
  explicit CNGroup(const RecordKey& key) : key_(key) {}

  RecordKey key_;
  PropertyBag properties_;
};

using CNGroupPtr = std::shared_ptr<const CNGroup>;

class OX_EXPORT CNMutableGroup : public CNGroup {
 public:
  // A new, unnamed group with a new identifier.
  static std::shared_ptr<CNMutableGroup> init();

  void setName(const Text& name);
  void setProperties(PropertyBag properties) { properties_ = std::move(properties); }

 private:
  friend class CNSaveRequest;
  using CNGroup::CNGroup;
};

}  // namespace ox
