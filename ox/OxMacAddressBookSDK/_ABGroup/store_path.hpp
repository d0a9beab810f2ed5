#pragma once

#include <string_view>

#include "ox/base/text.hpp"

namespace ox {

// The account id that a group's description tells by the path of its store file: the name of the
// folder that holds the file. Missing when the file lies directly in the address-book folder (the
// local store) or the text holds no such path that ends at a line feed.
Text accountIdFromDescription(std::string_view description);

}  // namespace ox
