#pragma once

#include <memory>
#include <utility>

#include "ox/base/export.hpp"
#include "ox/base/object.hpp"
#include "ox/base/text.hpp"

namespace ox {

// A phone number as it was written. Immutable.
class OX_EXPORT OxObjectPhone final : public HostObject {
  struct Key {
    explicit Key() = default;
  };

 public:
  static std::shared_ptr<OxObjectPhone> initWithPhoneNumber(Text phoneNumber) {
    return std::make_shared<OxObjectPhone>(Key(), std::move(phoneNumber));
  }

  const Text& phoneNumber() const { return phoneNumber_; }

  bool equals(const HostObject& other) const override {
    const auto* same = dynamic_cast<const OxObjectPhone*>(&other);
    return same != nullptr && phoneNumber_ == same->phoneNumber_;
  }

  OxObjectPhone(Key, Text phoneNumber) : phoneNumber_(std::move(phoneNumber)) {}

 private:
  Text phoneNumber_;
};

}  // namespace ox
