#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ox/OxAddressBookSDK/properties/OxProperty.hpp"
#include "ox/OxAddressBookSDK/record_lists.hpp"
#include "ox/OxAddressBookSDK/values/OxValue.hpp"
#include "ox/base/export.hpp"
#include "ox/base/image.hpp"
#include "ox/base/text.hpp"

namespace ox {

class OxObjectEmail;
class OxObjectPhone;

// A person of an address book, as a host sees it.
class OX_EXPORT IOxPerson {
 public:
  virtual ~IOxPerson() = default;

  virtual Text ID() const = 0;
  // The ID of the book that holds this person.
  virtual Text addressBookID() const = 0;
  virtual Text displayName() const = 0;

  // Null when the person holds none. Borrowed, for it may be the very value that the person holds:
  // copy what is kept, and change a copy only. A record of the store answers with a new one.
  virtual OxValuePtr valueByProperty(const OxPropertyPtr& property) const = 0;
  virtual OxValuePtr valueByPropertyName(TextView name) const = 0;
  // A missing value takes the property away; the value is not kept, only what it holds.
  virtual void setValue_byProperty(const OxValuePtr& value, const OxPropertyPtr& property) = 0;
  virtual void setValue_byPropertyName(const OxValuePtr& value, TextView name) = 0;

  virtual ImagePtr thumbnail() const = 0;
  virtual void setThumbnail(const ImagePtr& image) = 0;
  virtual std::shared_ptr<const OxObjectPhone> mainPhone() const = 0;
  virtual std::shared_ptr<const OxObjectEmail> mainEmail() const = 0;
  // The groups that hold this person.
  virtual Groups groups() const = 0;
  // The properties for which this person holds a value that is not an empty multiple one, in the
  // standard order.
  virtual std::vector<OxPropertyPtr> notNullValueProperty() const = 0;

  virtual std::vector<std::string> tagArray() const = 0;
  virtual void addTag(TextView tag) = 0;
  virtual void removeTag(TextView tag) = 0;
  // A missing list clears the tags, as an empty one does.
  virtual void setTags(const std::optional<std::vector<std::string>>& tags) = 0;

  // The display name in upper-case Latin letters. Optional: missing unless the class knows it.
  virtual Text nameChineesPinyin() const { return std::nullopt; }

 protected:
  IOxPerson() = default;
  IOxPerson(const IOxPerson&) = default;
  IOxPerson& operator=(const IOxPerson&) = default;
};

}  // namespace ox
