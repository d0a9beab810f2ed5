#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace ox {

// Sixteen bytes of text side by side, for what is asked of every byte of a file: g++ and clang make
// one instruction of each operation where the processor has it.
class SixteenBytes {
 public:
  static constexpr std::size_t kCount = 16;

  SixteenBytes() = default;
  explicit SixteenBytes(const char* text) { std::memcpy(&bytes_, text, kCount); }

  // As many as are left of the text, and blanks for the rest.
  explicit SixteenBytes(std::string_view text) {
    if (text.size() >= kCount) {
      std::memcpy(&bytes_, text.data(), kCount);
    } else {
      bytes_ = std::bit_cast<Bytes>(withBlanks(text));
    }
  }

  // Every bit of a byte is set where the answer is yes, none where it is no.
  SixteenBytes equalTo(char c) const {
    return SixteenBytes(reinterpret_cast<Bytes>(bytes_ == static_cast<unsigned char>(c)));
  }
  SixteenBytes below(char c) const {
    return SixteenBytes(reinterpret_cast<Bytes>(bytes_ < static_cast<unsigned char>(c)));
  }
  SixteenBytes operator|(const SixteenBytes& other) const {
    return SixteenBytes(bytes_ | other.bytes_);
  }

  bool isZero() const {
    const auto words = asWords();
    return (words[0] | words[1]) == 0;
  }
  bool isAscii() const {
    const auto words = asWords();
    return ((words[0] | words[1]) & 0x8080808080808080U) == 0;
  }
  // The place of the first byte that is not zero; there is one.
  std::size_t firstSet() const {
    static_assert(std::endian::native == std::endian::little, "the first byte is the lowest");
    const auto words = asWords();
    const auto bit = words[0] != 0 ? std::countr_zero(words[0]) : 64 + std::countr_zero(words[1]);
    return static_cast<std::size_t>(bit) / 8;
  }

 private:
  using Bytes [[gnu::vector_size(kCount)]] = unsigned char;

  explicit SixteenBytes(Bytes bytes) : bytes_(bytes) {}

  template <typename Word>
  static Word wordAt(const char* text) {
    Word word;
    std::memcpy(&word, text, sizeof word);
    return word;
  }

  // Fewer than eight, and blanks behind them. Both ends are read as whole words, which overlap:
  // most texts are short, and going through memory for their bytes would cost more than all the
  // rest.
  static std::uint64_t eightOf(const char* text, std::size_t count) {
    constexpr std::uint64_t kBlanks = 0x2020202020202020U;
    if (count == 0) return kBlanks;
    std::uint64_t word = 0;
    if (count >= 4) {
      const auto back = std::uint64_t{wordAt<std::uint32_t>(text + count - 4)};
      word = wordAt<std::uint32_t>(text) | back << (8 * (count - 4));
    } else {
      for (const auto at : {std::size_t{0}, count / 2, count - 1}) {
        word |= std::uint64_t{static_cast<unsigned char>(text[at])} << (8 * at);
      }
    }
    return word | kBlanks << (8 * count);
  }

  static std::array<std::uint64_t, 2> withBlanks(std::string_view text) {
    if (text.size() < 8) return {eightOf(text.data(), text.size()), eightOf(nullptr, 0)};
    const auto* const rest = text.data() + 8;
    return {wordAt<std::uint64_t>(text.data()), eightOf(rest, text.size() - 8)};
  }

  std::array<std::uint64_t, 2> asWords() const {
    return std::bit_cast<std::array<std::uint64_t, 2>>(bytes_);
  }

  Bytes bytes_{};
};

}  // namespace ox
