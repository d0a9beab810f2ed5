#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace ox {

// XXH3: tells accidental damage, not malice. The same bytes give the same sum on every machine.
std::uint64_t checksum64(std::string_view bytes);
// Another one for each key.
std::uint64_t checksum64(std::string_view bytes, std::uint64_t key);

// 32 lower-case hexadecimal digits, the canonical (big-endian) form.
std::string checksum128(std::string_view bytes);

// The same of bytes that come one after the other.
class Checksum128 {
 public:
  Checksum128();
  ~Checksum128();
  void add(std::string_view bytes);
  std::string text() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace ox
