#include "ox/base/json_writer.hpp"

#include <array>
#include <charconv>

#include "ox/base/text/sixteen_bytes.hpp"
#include "ox/base/text/utf8.hpp"

namespace ox {
namespace {

// How much of the text stands before the first character that must be escaped.
std::size_t plainPrefix(std::string_view text) {
  for (std::size_t at = 0; at < text.size(); at += SixteenBytes::kCount) {
    const SixteenBytes bytes(text.substr(at));
    const auto escaped = bytes.below(' ') | bytes.equalTo('"') | bytes.equalTo('\\');
    if (!escaped.isZero()) return at + escaped.firstSet();
  }
  return text.size();
}

void appendEscaped(std::string& out, char character) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  if (character == '"' || character == '\\') {
    out += '\\';
    out += character;
  } else if (character == '\n') {
    out += "\\n";
  } else {
    out += "\\u00";
    out += kDigits[static_cast<unsigned char>(character) >> 4];
    out += kDigits[static_cast<unsigned char>(character) & 15];
  }
}

}  // namespace

void JsonWriter::begin(char mark) {
  separate();
  out_ += mark;
  first_ = true;
}

void JsonWriter::end(char mark) {
  out_ += mark;
  first_ = false;
}

void JsonWriter::separate() {
  if (!first_) out_ += ',';
  first_ = false;
}

void JsonWriter::writeName(std::string_view name) {
  separate();
  quote(name);
  out_ += ':';
  first_ = true;
}

void JsonWriter::writeNull() {
  separate();
  out_ += "null";
}

void JsonWriter::writeBoolean(bool value) {
  separate();
  out_ += value ? "true" : "false";
}

void JsonWriter::writeInteger(std::int64_t number) {
  separate();
  std::array<char, 24> digits{};
  const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  out_.append(digits.data(), result.ptr);
}

void JsonWriter::writeReal(double number) {
  separate();
  std::array<char, 40> digits{};
  const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  const std::string_view shortest(digits.data(),
                                  static_cast<std::size_t>(result.ptr - digits.data()));
  out_ += shortest;
  if (shortest.find_first_of(".e") == std::string_view::npos) out_ += ".0";
}

void JsonWriter::writeText(std::string_view text) {
  separate();
  if (isValidUtf8(text)) {
    quote(text);
  } else {
    quote(validUtf8(std::string(text)));
  }
}

void JsonWriter::quote(std::string_view text) {
  out_ += '"';
  while (true) {
    const auto plain = plainPrefix(text);
    out_ += text.substr(0, plain);
    if (plain == text.size()) break;
    appendEscaped(out_, text[plain]);
    text.remove_prefix(plain + 1);
  }
  out_ += '"';
}

void JsonWriter::writeMember(std::string_view name, std::string_view value) {
  writeName(name);
  writeText(value);
}

void JsonWriter::writeMember(std::string_view name, const Text& value) {
  if (value) writeMember(name, std::string_view(*value));
}

void JsonWriter::writeMember(std::string_view name, std::int64_t value) {
  writeName(name);
  writeInteger(value);
}

void JsonWriter::endLine() {
  out_ += '\n';
  first_ = true;
}

}  // namespace ox
