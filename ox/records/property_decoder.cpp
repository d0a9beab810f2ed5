#include <algorithm>
#include <cassert>
#include <cstring>
#include <string>
#include <utility>

#include "ox/base/checksum.hpp"
#include "ox/records/property_code.hpp"
#include "ox/records/property_codec.hpp"

namespace ox {
namespace {

using namespace property_code;

constexpr int kMaxDepth = 32;
// Room that is made before anything is read; more entries than that make room as they come.
constexpr std::uint64_t kMostReserved = 12;

class Decoder {
 public:
  explicit Decoder(std::string_view bytes) : rest_(bytes) {}

  bool atEnd() const { return rest_.empty(); }

  std::pair<PropertyId, PropertyValue> property() {
    const auto id = number();
    if (id != 0) return {checkedId(id), value()};
    const auto name = bytes();
    const auto type = static_cast<ABPropertyType>(number());
    const auto known = property_table::addStored(name, type);
    if (known == 0) corrupt();
    return {known, value()};
  }

 private:
  [[noreturn]] static void corrupt() {
    throw DamagedProperties("the stored values of a record are damaged");
  }

  static PropertyId checkedId(std::uint64_t id) {
    if (id >= kFirstCustomProperty) corrupt();
    return static_cast<PropertyId>(id);
  }

  PropertyValue value() {
    if (!rest_.empty() && static_cast<Tag>(rest_.front()) == Tag::Multi) {
      rest_.remove_prefix(1);
      return multi();
    }
    return object(0);
  }

  std::uint8_t byte() {
    if (rest_.empty()) corrupt();
    const auto value = static_cast<std::uint8_t>(rest_.front());
    rest_.remove_prefix(1);
    return value;
  }

  std::uint64_t number() {
    std::uint64_t value = 0;
    for (unsigned shift = 0; shift < 64; shift += 7) {
      const auto part = byte();
      value |= static_cast<std::uint64_t>(part & 0x7FU) << shift;
      if ((part & 0x80U) == 0) return value;
    }
    corrupt();
  }

  std::int64_t signedNumber() {
    const auto value = number();
    return static_cast<std::int64_t>(value >> 1U) ^ -static_cast<std::int64_t>(value & 1U);
  }

  std::string_view take(std::uint64_t count) {
    if (count > rest_.size()) corrupt();
    const auto taken = rest_.substr(0, count);
    rest_.remove_prefix(count);
    return taken;
  }

  std::string_view bytes() { return take(number()); }

  // A count of things that take at least one byte each.
  std::uint64_t count() {
    const auto value = number();
    if (value > rest_.size()) corrupt();
    return value;
  }

  template <typename T>
  T raw() {
    T value;
    std::memcpy(&value, take(sizeof value).data(), sizeof value);
    return value;
  }

  MultiValuePtr multi() {
    auto values = std::make_shared<MultiValue>();
    const auto size = count();
    const auto primary = number();
    if (primary > size) corrupt();
    values->entries.reserve(size);
    for (std::uint64_t i = 0; i < size; ++i) {
      auto& entry = values->entries.emplace_back();
      entry.identifier = raw<std::uint64_t>();
      const auto label = number();
      if (label != 0) entry.label = std::string(take(label - 1));
      entry.value = object(0);
    }
    assert(values->entries.size() == size);
    if (primary != 0) values->primary = values->entries[primary - 1].identifier;
    return values;
  }

  Object object(int depth) {
    if (depth > kMaxDepth) corrupt();
    switch (static_cast<Tag>(byte())) {
      case Tag::Missing:
        return {};
      case Tag::String:
        return std::string(bytes());
      case Tag::Integer:
        return signedNumber();
      case Tag::Real:
        return raw<double>();
      case Tag::Date:
        return date();
      case Tag::Data:
        return makeData(std::string(bytes()));
      case Tag::Array:
        return array(depth);
      case Tag::Dictionary:
        return dictionary(depth);
      case Tag::Multi:
        break;
    }
    corrupt();
  }

  Date date() {
    const auto parts = byte();
    Date date;
    if (parts & kHasYear) date.year = raw<std::int16_t>();
    if (parts & kHasMonth) date.month = raw<std::uint8_t>();
    if (parts & kHasDay) date.day = raw<std::uint8_t>();
    if (parts & kHasTime) date.secondOfDay = raw<std::int32_t>();
    if (parts & kHasOffset) date.utcOffsetMinutes = raw<std::int16_t>();
    return date;
  }

  Object array(int depth) {
    Array elements;
    const auto size = count();
    elements.reserve(size);
    for (std::uint64_t i = 0; i < size; ++i) elements.push_back(object(depth + 1));
    return elements;
  }

  Object dictionary(int depth) {
    Dictionary entries;
    const auto size = count();
    entries.reserve(std::min(size, kMostReserved));
    for (std::uint64_t i = 0; i < size; ++i) {
      const auto key = bytes();
      entries.set(key, object(depth + 1));
    }
    return entries;
  }

  std::string_view rest_;
};

}  // namespace

PropertyBag decodeProperties(std::string_view bytes, std::size_t mostProperties) {
  const auto damaged = [](const char* why) {
    throw DamagedProperties(std::string("the stored values of a record ") + why);
  };
  if (bytes.size() < 1 + kChecksumSize) damaged("are cut short");
  const auto content = bytes.substr(0, bytes.size() - kChecksumSize);
  std::uint64_t checksum = 0;
  std::memcpy(&checksum, bytes.data() + content.size(), kChecksumSize);
  if (checksum != checksum64(content)) damaged("are damaged: their checksum differs");
  if (content.front() != kVersion) damaged("are of an unknown version");
  PropertyBag properties;
  properties.reserve(std::min<std::size_t>(mostProperties, kMostReserved));
  std::size_t count = 0;
  PropertyId last = 0;
  for (Decoder decoder(content.substr(1)); !decoder.atEnd();) {
    if (++count > mostProperties) damaged("are too many");
    auto [id, value] = decoder.property();
    // They lie in order, but for custom ones, whose numbers are this process's own.
    if (id > last && !isMissing(value)) {
      last = id;
      properties.append(id, std::move(value));
    } else {
      properties.set(id, std::move(value));
    }
  }
  assert(std::is_sorted(properties.entries().begin(), properties.entries().end(),
                        [](const auto& a, const auto& b) { return a.first < b.first; }));
  return properties;
}

}  // namespace ox
