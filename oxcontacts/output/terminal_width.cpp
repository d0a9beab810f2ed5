#include "oxcontacts/output/terminal_width.hpp"

#include <charconv>
#include <cstdlib>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

namespace ox::program {

std::optional<std::size_t> outputColumns() {
  if (const char* variable = std::getenv("COLUMNS")) {
    const std::string_view text = variable;
    std::size_t columns = 0;
    const auto* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, columns);
    if (read.ec == std::errc() && read.ptr == end && columns > 0) return columns;
  }
  winsize size{};
  if (::isatty(STDOUT_FILENO) == 0 || ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 ||
      size.ws_col == 0) {
    return std::nullopt;
  }
  return size.ws_col;
}

}  // namespace ox::program
