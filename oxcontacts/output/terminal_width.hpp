#pragma once

#include <cstddef>
#include <optional>

namespace ox::program {

// How many columns a line of the output may have: $COLUMNS, else what the terminal says. Missing
// where the output is none, so that what goes into a file or a pipe is whole.
std::optional<std::size_t> outputColumns();

}  // namespace ox::program
