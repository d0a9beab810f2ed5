#include "bench/card_text.hpp"

namespace ox::bench {

std::string joined(std::initializer_list<std::string_view> parts) {
  std::string text;
  for (const auto part : parts) text.append(part);
  return text;
}

std::string escaped(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c == '\n') {
      result += "\\n";
      continue;
    }
    if (c == ',' || c == ';' || c == '\\') result += '\\';
    result += c;
  }
  return result;
}

std::string asciiOf(std::string_view text) {
  std::string result;
  for (const char c : text) {
    if (c >= 'A' && c <= 'Z') result += static_cast<char>(c - 'A' + 'a');
    if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) result += c;
  }
  return result.empty() ? "desk" : result;
}

void appendFolded(std::string& out, std::string_view line) {
  std::size_t room = 75;
  while (line.size() > room) {
    auto end = room;
    while ((static_cast<unsigned char>(line[end]) & 0xC0U) == 0x80U) --end;
    out.append(line.substr(0, end)).append("\r\n ");
    line.remove_prefix(end);
    room = 74;
  }
  out.append(line).append("\r\n");
}

}  // namespace ox::bench
