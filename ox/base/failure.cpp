#include "ox/base/failure.hpp"

#include <algorithm>
#include <array>
#include <new>
#include <system_error>

namespace ox {
namespace {

FailureKind kindOfCode(const std::error_code& code) {
  constexpr std::array kDenied = {std::errc::permission_denied, std::errc::operation_not_permitted,
                                  std::errc::read_only_file_system};
  if (code == std::errc::no_space_on_device || code == std::errc::file_too_large) {
    return FailureKind::Full;
  }
  if (code == std::errc::not_enough_memory) return FailureKind::NoMemory;
  const bool isDenied = std::ranges::any_of(kDenied, [&](auto kind) { return code == kind; });
  return isDenied ? FailureKind::Denied : FailureKind::Unavailable;
}

}  // namespace

FailureKind kindOf(const std::exception& error) {
  if (const auto* known = dynamic_cast<const FailureError*>(&error)) return known->kind();
  if (const auto* system = dynamic_cast<const std::system_error*>(&error)) {
    return kindOfCode(system->code());
  }
  const bool noMemory = dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
  return noMemory ? FailureKind::NoMemory : FailureKind::Other;
}

Failure failureOf(const std::exception& error) {
  const auto* known = dynamic_cast<const FailureError*>(&error);
  return {kindOf(error), error.what(), known != nullptr ? known->subject() : std::string()};
}

}  // namespace ox
