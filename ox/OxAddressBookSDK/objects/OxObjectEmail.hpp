#pragma once

#include <memory>
#include <utility>

#include "ox/base/export.hpp"
#include "ox/base/object.hpp"
#include "ox/base/text.hpp"

namespace ox {

// An e-mail address as it was written. Immutable.
class OX_EXPORT OxObjectEmail final : public HostObject {
  struct Key {
    explicit Key() = default;
  };

 public:
  static std::shared_ptr<OxObjectEmail> initWithEmail(Text email) {
    return std::make_shared<OxObjectEmail>(Key(), std::move(email));
  }

  const Text& email() const { return email_; }

  bool equals(const HostObject& other) const override {
    const auto* same = dynamic_cast<const OxObjectEmail*>(&other);
    return same != nullptr && email_ == same->email_;
  }

  OxObjectEmail(Key, Text email) : email_(std::move(email)) {}

 private:
  Text email_;
};

}  // namespace ox
