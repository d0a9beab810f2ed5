#pragma once

#include "ox/OxAddressBookSDK/IOxGroup.hpp"

namespace ox {

// A group that lies in no store.
class LooseGroup final : public IOxGroup {
 public:
  using Persons = std::vector<std::shared_ptr<IOxPerson>>;

  LooseGroup(TextView identifier, TextView name)
      : identifier_(identifier.toText()), name_(name.toText()) {}

  std::vector<std::shared_ptr<IOxGroup>> below;
  std::vector<std::shared_ptr<IOxPerson>> members;

  Text ID() const override { return identifier_; }
  std::uint64_t subGroupsCount() const override { return below.size(); }
  Text addressBookID() const override { return "book"; }
  void setDisplayName(TextView name) override { name_ = name.toText(); }
  Text displayName() const override { return name_; }
  std::vector<std::shared_ptr<IOxGroup>> subGroups() const override { return below; }
  std::vector<std::shared_ptr<IOxPerson>> persons() const override { return members; }
  std::vector<std::shared_ptr<IOxPerson>> includePersons() const override { return members; }
  std::uint64_t includePersonsCount() const override { return members.size(); }
  // Nothing below edits it.
  std::shared_ptr<IOxGroup> addSubGroupByName(TextView) override { return nullptr; }
  bool removeSubGroup(const std::shared_ptr<IOxGroup>&) override { return false; }
  void removePersons(const Persons&) override {}
  void removePersonsFromThisGroup(const Persons&) override {}
  void addPersons(const Persons&) override {}
  void removePersons_progress(const Persons&, const ProgressCallback&) override {}
  void addPersons_progress(const Persons&, const ProgressCallback&) override {}

 private:
  Text identifier_;
  Text name_;
};

}  // namespace ox
