#include "ox/records/tag_change.hpp"

#include <bit>
#include <cstdint>
#include <cstring>
#include <utility>

#include "ox/base/checksum.hpp"

namespace ox {
namespace {

static_assert(std::endian::native == std::endian::little, "the stored form is little endian");

constexpr char kVersion = 1;
constexpr std::size_t kChecksumSize = 8;

class Writer {
 public:
  void number(std::uint64_t value) {
    for (; value >= 0x80; value >>= 7U) bytes_ += static_cast<char>(value | 0x80);
    bytes_ += static_cast<char>(value);
  }

  void text(const std::string& text) {
    number(text.size());
    bytes_ += text;
  }

  void texts(const std::vector<std::string>& texts) {
    number(texts.size());
    for (const auto& each : texts) text(each);
  }

  std::string withChecksum() && {
    const auto checksum = checksum64(bytes_);
    static_assert(sizeof checksum == kChecksumSize);
    bytes_.append(reinterpret_cast<const char*>(&checksum), kChecksumSize);
    return std::move(bytes_);
  }

 private:
  std::string bytes_{kVersion};
};

class Reader {
 public:
  explicit Reader(std::string_view bytes) {
    if (bytes.size() < 1 + kChecksumSize) damaged();
    const auto content = bytes.substr(0, bytes.size() - kChecksumSize);
    std::uint64_t checksum = 0;
    std::memcpy(&checksum, bytes.data() + content.size(), kChecksumSize);
    if (checksum != checksum64(content) || content.front() != kVersion) damaged();
    rest_ = content.substr(1);
  }

  std::string text() {
    const auto size = number();
    if (size > rest_.size()) damaged();
    const auto taken = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return std::string(taken);
  }

  std::vector<std::string> texts() {
    const auto count = number();
    if (count > rest_.size()) damaged();  // each takes a byte at least
    std::vector<std::string> list;
    for (std::uint64_t i = 0; i < count; ++i) list.push_back(text());
    return list;
  }

  void end() const {
    if (!rest_.empty()) damaged();
  }

 private:
  [[noreturn]] static void damaged() {
    throw DamagedTagChange("a stored change of tags is damaged");
  }

  std::uint64_t number() {
    std::uint64_t value = 0;
    for (unsigned shift = 0; shift < 64 && !rest_.empty(); shift += 7) {
      const auto part = static_cast<std::uint8_t>(rest_.front());
      rest_.remove_prefix(1);
      value |= static_cast<std::uint64_t>(part & 0x7FU) << shift;
      if ((part & 0x80U) == 0) return value;
    }
    damaged();
  }

  std::string_view rest_;
};

}  // namespace

StoredTagChange encodeTagChange(const TagChange& change) {
  Writer before;
  before.text(change.manager);
  before.text(change.person);
  before.texts(change.before);
  Writer after;
  after.texts(change.after);
  return {std::move(before).withChecksum(), std::move(after).withChecksum()};
}

TagChange decodeTagChange(std::string_view before, std::string_view after) {
  TagChange change;
  Reader older(before);
  change.manager = older.text();
  change.person = older.text();
  change.before = older.texts();
  older.end();
  Reader newer(after);
  change.after = newer.texts();
  newer.end();
  return change;
}

}  // namespace ox
