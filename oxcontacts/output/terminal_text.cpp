#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {
namespace {

constexpr std::string_view kReplacement = "\uFFFD";

// The length of a sequence at the front of the text that must not reach the terminal; 0 for none.
std::size_t unsafeFront(std::string_view text) {
  const auto byte = [&](std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
  };
  if (byte(0) < 0x20U || byte(0) == 0x7FU) return 1;
  if (byte(0) == 0xC2U && byte(1) >= 0x80U && byte(1) <= 0x9FU) return 2;  // C1
  const bool embedding =
      byte(0) == 0xE2U && byte(1) == 0x80U && byte(2) >= 0xAAU && byte(2) <= 0xAEU;
  const bool isolate = byte(0) == 0xE2U && byte(1) == 0x81U && byte(2) >= 0xA6U && byte(2) <= 0xA9U;
  return embedding || isolate ? 3 : 0;
}

}  // namespace

std::string terminalText(std::string_view text) {
  std::string safe;
  safe.reserve(text.size());
  while (!text.empty()) {
    const auto unsafe = unsafeFront(text);
    if (unsafe == 0) {
      safe += text.front();
      text.remove_prefix(1);
      continue;
    }
    if (text.front() == '\n') {
      safe += ' ';
    } else {
      safe += kReplacement;
    }
    text.remove_prefix(unsafe);
  }
  return safe;
}

}  // namespace ox::program
