#include "ox/base/failure.hpp"

#include <new>

namespace ox {

FailureKind kindOf(const std::exception& error) {
  if (const auto* known = dynamic_cast<const FailureError*>(&error)) return known->kind();
  const bool noMemory = dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
  return noMemory ? FailureKind::NoMemory : FailureKind::Other;
}

Failure failureOf(const std::exception& error) {
  const auto* known = dynamic_cast<const FailureError*>(&error);
  return {kindOf(error), error.what(), known != nullptr ? known->subject() : std::string()};
}

}  // namespace ox
