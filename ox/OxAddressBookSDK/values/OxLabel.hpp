#pragma once

#include <memory>
#include <utility>

#include "ox/base/text.hpp"

namespace ox {

// What a value is called. Belongs to the value that holds it; one thread at a time.
class OxLabel {
  struct Key {
    explicit Key() = default;
  };

 public:
  static std::shared_ptr<OxLabel> init() { return std::make_shared<OxLabel>(Key()); }

  // The store's label key; for a single value the display name of its property.
  const Text& name() const { return name_; }
  void setName(Text name) { name_ = std::move(name); }

  // The word shown to the user.
  const Text& displayName() const { return displayName_; }
  void setDisplayName(Text displayName) { displayName_ = std::move(displayName); }

  bool operator==(const OxLabel&) const = default;

  explicit OxLabel(Key) {}

 private:
  Text name_;
  Text displayName_;
};

}  // namespace ox
