#pragma once

#include <memory>
#include <utility>

#include "ox/base/export.hpp"
#include "ox/base/object.hpp"
#include "ox/base/text.hpp"

namespace ox {

// The parts of a person's name, each of which may be missing. Immutable.
class OX_EXPORT OxObjectPersonName final : public HostObject {
  struct Key {
    explicit Key() = default;
  };

 public:
  static std::shared_ptr<OxObjectPersonName> initWithFirst_middle_last(Text first, Text middle,
                                                                       Text last) {
    return std::make_shared<OxObjectPersonName>(Key(), std::move(first), std::move(middle),
                                                std::move(last));
  }

  const Text& first() const { return first_; }
  const Text& middle() const { return middle_; }
  const Text& last() const { return last_; }

  // First, middle and last joined by one blank, the empty ones left out. When every part that is
  // not empty is written in Han, Kana or Hangul: last, middle, first without separator. Missing
  // when all three parts are missing; empty when those present are.
  Text displayString() const;

  bool equals(const HostObject& other) const override;

  OxObjectPersonName(Key, Text first, Text middle, Text last)
      : first_(std::move(first)), middle_(std::move(middle)), last_(std::move(last)) {}

 private:
  Text first_;
  Text middle_;
  Text last_;
};

}  // namespace ox
