#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/platform/Contacts/CNPredicate.hpp"
#include "ox/records/property_bag.hpp"

namespace ox {

// A contact as the container database gave it, or one that is being made. Identifiers are known
// from the beginning. Mutable ones are used by one thread at a time.
class OX_EXPORT CNContact {
 public:
  virtual ~CNContact() = default;

  Text identifier() const { return key_.text(); }
  const RecordKey& key() const { return key_; }
  // Empty for a contact that was fetched with identifiers only.
  const PropertyBag& properties() const { return properties_; }
  const Data& imageData() const { return image_; }

  static CNPredicate predicateForContactsInContainerWithIdentifier(TextView identifier);
  static CNPredicate predicateForContactsWithIdentifiers(std::vector<std::string> identifiers);

 protected:
  friend class CNContactStore;
  friend class CNMutableContact;
  explicit CNContact(const RecordKey& key) : key_(key) {}

  RecordKey key_;
  bool hasValues_ = false;  // false: fetched with identifiers only
  PropertyBag properties_;
  Data image_;
};

using CNContactPtr = std::shared_ptr<const CNContact>;

class OX_EXPORT CNMutableContact : public CNContact {
 public:
  // A new, empty contact with a new identifier.
  static std::shared_ptr<CNMutableContact> init();
  // Holds every value, read now when the source was fetched with identifiers only. Keeps the
  // identifier; a save request that adds the copy gives it a new one when the source is stored
  // already. A request with a copy whose values could not be read, or whose source is gone, is
  // refused.
  static std::shared_ptr<CNMutableContact> mutableCopy(const CNContact& source);

  void setProperties(PropertyBag properties) {
    properties_ = std::move(properties);
    hasValues_ = true;
  }
  void setImageData(Data image) { image_ = std::move(image); }

 private:
  friend class CNSaveRequest;
  using CNContact::CNContact;
};

}  // namespace ox
