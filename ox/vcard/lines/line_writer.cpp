#include "ox/vcard/lines/line_writer.hpp"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <cstdint>

#include "ox/base/text/sixteen_bytes.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/uri.hpp"

namespace ox::vcard {
namespace {

constexpr std::size_t kLineOctets = 75;

enum Trait : std::uint8_t {
  kControl = 1,     // may not stand in a card; the line feed is written as an escape
  kEscaped = 2,     // in a text value
  kUriEscaped = 4,  // in a value that is no list
  kQuoting = 8,     // a parameter with it stands in quotes
  kForbidden = 16,  // in a line: kControl and the line feed
};

constexpr auto kTraits = [] {
  std::array<std::uint8_t, 256> traits{};
  for (std::size_t i = 0; i < traits.size(); ++i) {
    const char c = static_cast<char>(i);
    unsigned bits = 0;
    if ((i < 0x20 && c != '\t' && c != '\n') || i == 0x7F) bits |= kControl;
    if ((bits & kControl) != 0 || c == '\n') bits |= kForbidden;
    if (c == '\\' || c == '\n') bits |= kEscaped | kUriEscaped;
    if (c == ',' || c == ';') bits |= kEscaped;
    if (c == ',' || c == ';' || c == ':' || c == '=') bits |= kQuoting;
    traits[i] = static_cast<std::uint8_t>(bits);
  }
  return traits;
}();

bool has(char c, Trait trait) {
  return (kTraits[static_cast<unsigned char>(c)] & trait) != 0;
}

// Every text and every line is looked through for these. The tab is taken for one, so only "none"
// is certain.
SixteenBytes controlsOf(const SixteenBytes& bytes) {
  return bytes.below(0x20) | bytes.equalTo(0x7F);
}

// True for characters that are neither controls nor escaped.
bool areOrdinary(const SixteenBytes& bytes) {
  const auto escaped = bytes.equalTo(',') | bytes.equalTo(';') | bytes.equalTo('\\');
  return (controlsOf(bytes) | escaped).isZero();
}

// The first character with that trait at or after a place; the size without one. The trait is one
// that only characters have which are not ordinary.
std::size_t findTrait(std::string_view text, std::size_t at, Trait trait) {
  while (at < text.size()) {
    const auto stop = std::min(at + SixteenBytes::kCount, text.size());
    if (!areOrdinary(SixteenBytes(text.substr(at)))) {
      for (; at < stop; ++at) {
        if (has(text[at], trait)) return at;
      }
    }
    at = stop;
  }
  return at;
}

// False when the text holds no control character at all.
bool mayHoldControls(std::string_view text) {
  SixteenBytes controls;
  for (; text.size() > SixteenBytes::kCount; text.remove_prefix(SixteenBytes::kCount)) {
    controls = controls | controlsOf(SixteenBytes(text));
  }
  return !(controls | controlsOf(SixteenBytes(text))).isZero();
}

void appendEscaped(std::string_view text, Trait trait, std::string& out) {
  std::size_t from = 0;
  while (true) {
    const auto at = findTrait(text, from, trait);
    out.append(text.substr(from, at - from));
    if (at == text.size()) return;
    out += '\\';
    out += text[at] == '\n' ? 'n' : text[at];
    from = at + 1;
  }
}

// How much of the rest goes on one line of that many octets.
std::size_t pieceOf(std::string_view rest, std::size_t octets) {
  assert(octets > 4 && "a character fits on a line");
  if (rest.size() <= octets) return rest.size();
  std::size_t at = octets;
  while (at > 0 && (static_cast<unsigned char>(rest[at]) & 0xC0U) == 0x80U) --at;
  std::size_t slashes = 0;
  while (slashes < at && rest[at - 1 - slashes] == '\\') ++slashes;
  if (slashes % 2 == 1) --at;
  return at == 0 ? octets : at;
}

}  // namespace

bool isPlain(std::string_view text) {
  return !text.empty() && findTrait(text, 0, kControl) == text.size();
}

void appendTextEscaped(std::string_view text, std::string& out) {
  appendEscaped(text, kEscaped, out);
}

CardText::CardText(std::string_view text) : view_(text) {
  std::size_t at = findTrait(text, 0, kControl);
  if (at == text.size()) return;
  own_.reserve(text.size() + 16);  // never the short form: isChanged() compares addresses
  own_.assign(text.substr(0, at));
  for (; at < text.size(); ++at) {
    if (!has(text[at], kControl)) {
      own_ += text[at];
    } else if (text[at] == '\r' && (at + 1 == text.size() || text[at + 1] != '\n')) {
      own_ += '\n';
    }
  }
  view_ = own_;
}

LineWriter& LineWriter::number(std::size_t value) {
  std::array<char, 20> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
  out_.append(digits.data(), end);
  return *this;
}

LineWriter& LineWriter::text(std::string_view text) {
  appendEscaped(text, kEscaped, out_);
  return *this;
}

LineWriter& LineWriter::uri(std::string_view text) {
  appendEscaped(text, kUriEscaped, out_);
  return *this;
}

LineWriter& LineWriter::percent(std::string_view bytes) {
  appendPercentEncoded(bytes, out_);
  return *this;
}

LineWriter& LineWriter::parameter(std::string_view name, std::string_view value) {
  bool quoted = value.empty() || isBlank(value.front()) || isBlank(value.back());
  for (const char c : value) quoted |= has(c, kQuoting);
  (out_ += ';').append(name) += '=';
  if (quoted) out_ += '"';
  for (const char c : value) {
    if (c == '\n') {
      out_ += "^n";
    } else if (c == '"') {
      out_ += "^'";
    } else if (c == '^') {
      out_ += "^^";
    } else {
      out_ += c;
    }
  }
  if (quoted) out_ += '"';
  return *this;
}

void LineWriter::takeOutControls() {
  const auto line = std::string_view(out_).substr(start_);
  if (!mayHoldControls(line)) return;
  const auto from = out_.begin() + static_cast<std::ptrdiff_t>(start_);
  out_.erase(std::remove_if(from, out_.end(), [](char c) { return has(c, kForbidden); }),
             out_.end());
}

void LineWriter::end() {
  assert(start_ <= out_.size() && "nobody takes written lines back");
  takeOutControls();
  if (folding_ == Folding::Yes && out_.size() - start_ > kLineOctets) {
    unfolded_.assign(out_, start_);
    out_.resize(start_);
    std::string_view rest = unfolded_;
    std::size_t octets = kLineOctets;
    while (true) {
      const auto piece = pieceOf(rest, octets);
      assert(piece > 0 && piece <= octets);
      out_.append(rest.substr(0, piece));
      rest.remove_prefix(piece);
      if (rest.empty()) break;
      out_.append("\r\n ");
      octets = kLineOctets - 1;
    }
  }
  out_.append("\r\n");
  start_ = out_.size();
}

}  // namespace ox::vcard
