#include "ox/base/text/transcription.hpp"

#include <array>
#include <cassert>
#include <cstdint>
#include <cstring>
#include <optional>

#include "ox/base/text/icu_transcription.hpp"
#include "ox/base/text/transcription_pieces.hpp"
#include "ox/base/text/transcription_table.hpp"

namespace ox {
namespace {

// A character outside the reach of the table; also what ill-formed bytes read as.
constexpr char32_t kOther = 0xFFFFFFFF;

// Reads the character at `at` and moves past it. Only forms of one, two and three bytes that the
// table can know are told apart.
char32_t nextCharacter(std::string_view text, std::size_t& at) {
  const auto byte = [&](std::size_t ahead) -> std::uint32_t {
    return at + ahead < text.size() ? static_cast<std::uint8_t>(text[at + ahead]) : 0U;
  };
  const auto isTail = [](std::uint32_t value) { return (value & 0xC0U) == 0x80U; };
  const std::uint32_t lead = byte(0);
  if (lead < 0x80) {
    at += 1;
    return lead;
  }
  const std::uint32_t second = byte(1);
  if (lead >= 0xC2 && lead <= 0xC9 && isTail(second)) {
    at += 2;
    return ((lead & 0x1FU) << 6U) | (second & 0x3FU);
  }
  const std::uint32_t third = byte(2);
  if (lead >= 0xE3 && lead <= 0xE9 && isTail(second) && isTail(third)) {
    at += 3;
    return ((lead & 0x0FU) << 12U) | ((second & 0x3FU) << 6U) | (third & 0x3FU);
  }
  return kOther;
}

// Follows how far the last contextual character reaches: to the next character, over one blank.
class Context {
 public:
  // False when this character stands beside another contextual one.
  bool pass(char32_t character, const Transcribed& entry) {
    if ((entry.traits & traits::kContextual) != 0) {
      if (reach_ > 0) return false;
      reach_ = 2;
    } else {
      reach_ = character == U' ' && reach_ == 2 ? 1 : 0;
    }
    return true;
  }

 private:
  int reach_ = 0;
};

// What one byte of text becomes at most: a Latin letter of two bytes gives kSpace bytes and a
// blank.
constexpr std::size_t kGrowth = 4;

// Writes the transcription to `out`, which has room for kGrowth times the text and one entry more.
// Returns its size, or missing when the text holds anything that needs ICU itself.
std::optional<std::size_t> writeFromTable(std::string_view text, char* out) {
  std::size_t written = 0;
  std::uint8_t before = 0;
  Context context;
  for (std::size_t at = 0; at < text.size();) {
    const char32_t character = nextCharacter(text, at);
    const Transcribed entry = transcribed(character);
    if ((entry.traits & traits::kNotHere) != 0 || !context.pass(character, entry)) {
      return std::nullopt;
    }
    const bool setOff =
        ((before & traits::kBlankToLetter) != 0 && (entry.traits & traits::kLetter) != 0) ||
        ((before & traits::kLetter) != 0 && (entry.traits & traits::kBlankAtLetter) != 0);
    if (setOff) out[written++] = ' ';
    std::memcpy(out + written, entry.text.data(), entry.text.size());
    assert(entry.length <= entry.text.size());
    written += entry.length;
    assert(written <= at * kGrowth && "the room that the caller made");
    before = entry.traits;
  }
  return written;
}

}  // namespace

std::string transcribeToLatin(std::string_view text) {
  constexpr std::size_t kShort = 128;
  if (text.size() <= kShort) {
    std::array<char, kShort * kGrowth + Transcribed::kSpace> buffer;  // written before it is read
    if (const auto size = writeFromTable(text, buffer.data())) return {buffer.data(), *size};
    return transcribeWithIcu(text);
  }
  std::string result(text.size() * kGrowth + Transcribed::kSpace, '\0');
  const auto size = writeFromTable(text, result.data());
  if (!size) return transcribeInPieces(text);
  result.resize(*size);
  result.shrink_to_fit();
  return result;
}

}  // namespace ox
