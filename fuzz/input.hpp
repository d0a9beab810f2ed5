#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ox::fuzz {

// The bytes of an input, taken from the front; zeros behind its end. Borrows them.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size)
      : rest_(reinterpret_cast<const char*>(data), size) {}

  bool isEmpty() const { return rest_.empty(); }
  std::string_view rest() const { return rest_; }

  std::uint8_t byte() {
    if (rest_.empty()) return 0;
    const auto value = static_cast<std::uint8_t>(rest_.front());
    rest_.remove_prefix(1);
    return value;
  }
  // Less than the limit, which is not 0.
  std::size_t below(std::size_t limit) { return (std::size_t{byte()} << 8U | byte()) % limit; }
  std::string_view bytes(std::size_t count) {
    const auto taken = rest_.substr(0, count);
    rest_.remove_prefix(taken.size());
    return taken;
  }
  // Behind a byte that tells how many.
  std::string_view text() { return bytes(byte()); }
  // Of as many bytes as the first one tells, most significant first.
  std::int64_t number() {
    std::uint64_t value = 0;
    for (auto count = byte() % 9; count > 0; --count) value = value << 8U | byte();
    return static_cast<std::int64_t>(value);
  }

 private:
  std::string_view rest_;
};

// Changes single bytes, as the rest of the input tells.
inline void patch(std::string& bytes, Input& input) {
  while (!input.isEmpty() && !bytes.empty()) {
    const auto place = std::size_t{input.byte()} << 16U | std::size_t{input.byte()} << 8U;
    bytes[(place | input.byte()) % bytes.size()] = static_cast<char>(input.byte());
  }
}

}  // namespace ox::fuzz
