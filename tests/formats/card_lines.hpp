#pragma once

#include <initializer_list>
#include <string>

namespace ox::formats_tests {

// A vCard 4.0 of these lines, as the writer frames it.
inline std::string cardOf(std::initializer_list<std::string> lines) {
  std::string card = "BEGIN:VCARD\r\nVERSION:4.0\r\n";
  for (const auto& line : lines) card += line + "\r\n";
  return card + "END:VCARD\r\n";
}

}  // namespace ox::formats_tests
