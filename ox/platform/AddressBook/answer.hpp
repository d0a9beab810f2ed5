#pragma once

#include <exception>
#include <utility>

#include "ox/base/failures.hpp"

namespace ox {

// The one place where a failing store meets the record database, which reports no errors: the
// failure is noticed, and the answer is the empty one.
template <typename Question>
auto answer(Question question) -> decltype(question()) {
  try {
    return question();
  } catch (const std::exception& error) {
    failures::notice(error);
    return decltype(question())();
  }
}

}  // namespace ox
