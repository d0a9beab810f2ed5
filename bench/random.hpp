#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>

namespace ox::bench {

// Numbers by a fixed rule. Not the library's distributions: those may differ between libraries.
class Random {
 public:
  explicit Random(std::uint64_t seed) : engine_(seed) {}

  std::uint64_t next() { return engine_(); }
  std::uint64_t below(std::uint64_t bound) { return next() % bound; }
  bool chance(unsigned percent) { return below(100) < percent; }

  template <typename List>
  const typename List::value_type& of(const List& list) {
    return list[below(list.size())];
  }

  // A random UUID (RFC 9562, version 4) as text.
  std::string uuid() {
    const auto high = (next() & ~std::uint64_t{0xF000}) | 0x4000U;
    const auto low = (next() >> 2U) | (std::uint64_t{1} << 63U);
    char text[40];
    std::snprintf(text, sizeof text, "%08llx-%04llx-%04llx-%04llx-%012llx",
                  static_cast<unsigned long long>(high >> 32U),
                  static_cast<unsigned long long>(high >> 16U & 0xFFFFU),
                  static_cast<unsigned long long>(high & 0xFFFFU),
                  static_cast<unsigned long long>(low >> 48U),
                  static_cast<unsigned long long>(low & 0xFFFF'FFFF'FFFFU));
    return text;
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace ox::bench
