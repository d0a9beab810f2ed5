#pragma once

#include <algorithm>
#include <utility>

#include "ox/OxAddressBookSDK/IOxPerson.hpp"

namespace ox {

// A person of a host that answers with the very values that it holds.
class LivePerson final : public IOxPerson {
 public:
  explicit LivePerson(TextView identifier) : identifier_(identifier.toText()) {}

  Text ID() const override { return identifier_; }
  Text addressBookID() const override { return "host"; }
  Text displayName() const override { return identifier_; }
  OxValuePtr valueByProperty(const OxPropertyPtr& property) const override {
    return property ? valueByPropertyName(property->name()) : nullptr;
  }
  OxValuePtr valueByPropertyName(TextView name) const override {
    const auto found = std::find_if(values_.begin(), values_.end(),
                                    [&](const auto& entry) { return name == entry.first; });
    return found == values_.end() ? nullptr : found->second;
  }
  void setValue_byProperty(const OxValuePtr& value, const OxPropertyPtr& property) override {
    values_.emplace_back(property->name(), value);
  }
  void setValue_byPropertyName(const OxValuePtr& value, TextView name) override {
    values_.emplace_back(*name, value);
  }
  // Nobody asks for the rest.
  ImagePtr thumbnail() const override { return nullptr; }
  void setThumbnail(const ImagePtr&) override {}
  std::shared_ptr<const OxObjectPhone> mainPhone() const override { return nullptr; }
  std::shared_ptr<const OxObjectEmail> mainEmail() const override { return nullptr; }
  std::vector<std::shared_ptr<IOxGroup>> groups() const override { return {}; }
  std::vector<OxPropertyPtr> notNullValueProperty() const override { return {}; }
  std::vector<std::string> tagArray() const override { return {}; }
  void addTag(TextView) override {}
  void removeTag(TextView) override {}
  void setTags(const std::optional<std::vector<std::string>>&) override {}

 private:
  Text identifier_;
  std::vector<std::pair<std::string, OxValuePtr>> values_;
};

}  // namespace ox
