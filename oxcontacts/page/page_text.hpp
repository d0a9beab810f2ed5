#pragma once

#include <string_view>

namespace ox::program {

// The page of page.html with its style and its script, before and after the data that stands in
// it. Made when the program is built.
extern const std::string_view kPageBeforeData;
extern const std::string_view kPageAfterData;

}  // namespace ox::program
