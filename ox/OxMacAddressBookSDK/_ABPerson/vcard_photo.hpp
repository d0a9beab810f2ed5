#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ox {

// The vCard with the photo line in it; missing when the card is not UTF-8 or has no end line.
std::optional<std::string> cardWithPhoto(std::string_view card, std::string_view photoLine);

}  // namespace ox
