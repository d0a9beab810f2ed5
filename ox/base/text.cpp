#include "ox/base/text.hpp"

namespace ox {

std::string withoutAll(std::string_view text, std::string_view what) {
  std::string result;
  result.reserve(text.size());
  std::size_t from = 0;
  while (true) {
    const auto found = what.empty() ? std::string_view::npos : text.find(what, from);
    result.append(text.substr(from, found - from));
    if (found == std::string_view::npos) return result;
    from = found + what.size();
  }
}

Text withoutLineBreaks(TextView text) {
  if (!text) return std::nullopt;
  // Nearly no text has one.
  if (text->find('\n') == std::string_view::npos) return text.toText();
  return withoutAll(*text, "\n");
}

}  // namespace ox
