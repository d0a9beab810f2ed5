#pragma once

#include <cstddef>
#include <string_view>

namespace ox::vcard {

inline constexpr char upper(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

inline constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

inline constexpr bool isLetter(char c) {
  return upper(c) >= 'A' && upper(c) <= 'Z';
}

inline constexpr bool isBlank(char c) {
  return c == ' ' || c == '\t';
}

// True when the text is that word, in any case. The word is given in upper case, which is also how
// most texts are.
inline constexpr bool isWord(std::string_view text, std::string_view upperWord) {
  if (text.size() != upperWord.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != upperWord[i] && upper(text[i]) != upperWord[i]) return false;
  }
  return true;
}

// The same for two words in any case.
inline constexpr bool isSameWord(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (upper(a[i]) != upper(b[i])) return false;
  }
  return true;
}

inline constexpr bool startsWithWord(std::string_view text, std::string_view upperWord) {
  return text.size() >= upperWord.size() && isWord(text.substr(0, upperWord.size()), upperWord);
}

// Without blanks and tabs at both ends.
inline constexpr std::string_view trimmed(std::string_view text) {
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace ox::vcard
