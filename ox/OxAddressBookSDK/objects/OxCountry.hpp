#pragma once

#include <memory>
#include <string>
#include <utility>

#include "ox/base/export.hpp"

namespace ox {

// A country. Immutable.
class OX_EXPORT OxCountry {
  struct Key {
    explicit Key() = default;
  };

 public:
  // The user's own country, as the environment tells it at this moment; never null.
  static std::shared_ptr<const OxCountry> local();

  // ISO 3166-1 alpha-2 code, upper case, never empty.
  const std::string& code() const { return code_; }

  OxCountry(Key, std::string code) : code_(std::move(code)) {}

 private:
  std::string code_;
};

}  // namespace ox
