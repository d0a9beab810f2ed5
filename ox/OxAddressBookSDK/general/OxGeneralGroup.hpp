#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ox/OxAddressBookSDK/IOxGroup.hpp"
#include "ox/base/export.hpp"
#include "ox/base/text.hpp"

namespace ox {

// A group of a neutral book: a title, and the keys of what lies in it. One thread at a time.
class OX_EXPORT OxGeneralGroup {
  struct Key {
    explicit Key() = default;
  };

 public:
  using Keys = std::vector<std::string>;

  static std::shared_ptr<OxGeneralGroup> make(Text title, Keys subArray, Keys persons) {
    return std::make_shared<OxGeneralGroup>(Key(), std::move(title), std::move(subArray),
                                            std::move(persons));
  }

  // One of the same name, with the IDs of what lies directly in it.
  static std::shared_ptr<OxGeneralGroup> copyOf(const IOxGroup& group);

  const Text& title() const { return title_; }
  // Keys in groupsDic and in personsDic of the book; a key need not find anything there.
  const Keys& subArray() const { return subArray_; }
  const Keys& persons() const { return persons_; }

  // The group that a load made for this one; null until one is set.
  const std::shared_ptr<IOxGroup>& extend() const { return extend_; }
  void setExtend(std::shared_ptr<IOxGroup> group) { extend_ = std::move(group); }

  OxGeneralGroup(Key, Text title, Keys subArray, Keys persons)
      : title_(std::move(title)), subArray_(std::move(subArray)), persons_(std::move(persons)) {}

 private:
  Text title_;
  Keys subArray_;
  Keys persons_;
  std::shared_ptr<IOxGroup> extend_;
};

}  // namespace ox
