// Property arguments of the program: read, or refused as wrong usage.
#include "oxcontacts/edit/assignment.hpp"

#include <cstdint>
#include <string>

#include "fuzz/require.hpp"
#include "oxcontacts/context.hpp"

using namespace ox;
using namespace ox::program;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const auto assignment = parseAssignment(std::string(reinterpret_cast<const char*>(data), size));
    fuzz::require(assignment.property != nullptr);
  } catch (const CommandError& error) {
    fuzz::require(error.code() == kUsage && *error.what() != '\0');
  }
  return 0;
}
