#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ox/OxAddressBookSDK/IOxPerson.hpp"
#include "ox/base/export.hpp"

namespace ox {

// A person of a neutral book: values by property, in memory. Belongs to no address book and to no
// group that answers IOxGroup. Its pictures are held packed: they take little room, and each answer
// unpacks them anew, a file when its pixels are asked for. One thread at a time.
class OX_EXPORT OxGeneralPerson final : public IOxPerson {
  struct Key {
    explicit Key() = default;
  };

 public:
  using Values = std::vector<std::pair<OxPropertyPtr, OxValuePtr>>;

  // A person without values. An identifier that is not UTF-8 is repaired.
  static std::shared_ptr<OxGeneralPerson> make(Text identifier);
  // A person of the same ID with a copy of every standard value.
  static std::shared_ptr<OxGeneralPerson> copyOf(const IOxPerson& person);

  Text ID() const override { return identifier_; }
  Text addressBookID() const override { return std::nullopt; }
  // The name as it is displayed; without one the company, else empty. Never missing.
  Text displayName() const override;

  OxValuePtr valueByProperty(const OxPropertyPtr& property) const override;
  OxValuePtr valueByPropertyName(TextView name) const override;
  void setValue_byProperty(const OxValuePtr& value, const OxPropertyPtr& property) override;
  void setValue_byPropertyName(const OxValuePtr& value, TextView name) override;
  // Sets the value itself, not a copy, and packs its pictures; nobody else may hold it.
  void takeValue(OxValuePtr value, const OxPropertyPtr& property);

  ImagePtr thumbnail() const override;
  void setThumbnail(const ImagePtr& image) override;
  std::shared_ptr<const OxObjectPhone> mainPhone() const override;
  std::shared_ptr<const OxObjectEmail> mainEmail() const override;
  Groups groups() const override { return {}; }
  std::vector<OxPropertyPtr> notNullValueProperty() const override;
  // Every value itself, no copy, in the order in which the properties were first set; a
  // PackedPicture stands where the value has a picture. Borrowed until the next change.
  const Values& values() const { return values_; }

  std::vector<std::string> tagArray() const override;
  void addTag(TextView tag) override;
  void removeTag(TextView tag) override;
  void setTags(const std::optional<std::vector<std::string>>& tags) override;

  // The person that a load made for this one; null until one is set.
  const std::shared_ptr<IOxPerson>& extend() const { return extend_; }
  void setExtend(std::shared_ptr<IOxPerson> person) { extend_ = std::move(person); }

  OxGeneralPerson(Key, Text identifier) : identifier_(std::move(identifier)) {}

 private:
  // The held value itself; null when there is none.
  const OxValue* find(std::string_view property) const;
  // What the single value of the property holds; a missing object when there is none.
  Object singleObject(std::string_view property) const;
  // What the main element of the multiple value holds; a missing object when there is none.
  Object mainObject(std::string_view property) const;
  // A missing object takes the property away.
  void setSingleObject(Object object, std::string_view property);

  Text identifier_;
  Values values_;
  std::shared_ptr<IOxPerson> extend_;
};

}  // namespace ox
