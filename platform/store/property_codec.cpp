#include "platform/store/property_codec.hpp"

#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

#include "base/checksum.hpp"
#include "platform/store/changes.hpp"
#include "platform/store/fingerprint.hpp"

namespace ox {
namespace {

static_assert(std::endian::native == std::endian::little, "the stored form is little endian");

constexpr char kVersion = 1;
constexpr std::size_t kChecksumSize = 8;
constexpr int kMaxDepth = 32;
// Room that is made before anything is read; more entries than that make room as they come.
constexpr std::uint64_t kMostReserved = 12;

enum class Tag : std::uint8_t {
  String = 1,
  Integer = 2,
  Real = 3,
  Date = 4,
  Data = 5,
  Array = 6,
  Dictionary = 7,
  Missing = 8,
  Multi = 16,
};

// Which parts of a date are present, as bits.
constexpr std::uint8_t kHasYear = 1;
constexpr std::uint8_t kHasMonth = 2;
constexpr std::uint8_t kHasDay = 4;
constexpr std::uint8_t kHasTime = 8;
constexpr std::uint8_t kHasOffset = 16;

enum class Identifiers { Keep, LeaveOut };

class Encoder {
 public:
  explicit Encoder(Identifiers identifiers) : identifiers_(identifiers) {}

  void property(PropertyId id, const PropertyValue& value) {
    if (id >= kFirstCustomProperty) {
      number(0);
      bytes(property_table::nameOf(id));
      number(static_cast<std::uint64_t>(property_table::typeOf(id)));
    } else {
      number(id);
    }
    if (const auto* single = std::get_if<Object>(&value)) {
      object(*single);
    } else {
      multi(*std::get<MultiValuePtr>(value));
    }
  }

  std::string& out() { return out_; }

 private:
  void tag(Tag tag) { out_ += static_cast<char>(tag); }

  void number(std::uint64_t value) {
    while (value >= 0x80) {
      out_ += static_cast<char>(value | 0x80);
      value >>= 7U;
    }
    out_ += static_cast<char>(value);
  }

  void signedNumber(std::int64_t value) {
    number((static_cast<std::uint64_t>(value) << 1U) ^ static_cast<std::uint64_t>(value >> 63));
  }

  template <typename T>
  void raw(T value) {
    char buffer[sizeof value];
    std::memcpy(buffer, &value, sizeof value);
    out_.append(buffer, sizeof value);
  }

  void bytes(std::string_view text) {
    number(text.size());
    out_ += text;
  }

  void multi(const MultiValue& values) {
    tag(Tag::Multi);
    number(values.entries.size());
    std::uint64_t primary = 0;
    for (std::size_t i = 0; i < values.entries.size(); ++i) {
      const auto identifier = values.entries[i].identifier;
      if (identifier != 0 && identifier == values.primary) primary = i + 1;
    }
    number(primary);
    for (const auto& entry : values.entries) {
      if (identifiers_ == Identifiers::Keep) raw(entry.identifier);
      number(entry.label ? entry.label->size() + 1 : 0);
      if (entry.label) out_ += *entry.label;
      object(entry.value);
    }
  }

  void object(const Object& object) {
    std::visit([this](const auto& held) { write(held); }, object.storage());
  }

  void write(std::monostate) { tag(Tag::Missing); }
  void write(const std::string& text) {
    tag(Tag::String);
    bytes(text);
  }
  void write(std::int64_t value) {
    tag(Tag::Integer);
    signedNumber(value);
  }
  void write(double value) {
    tag(Tag::Real);
    raw(value);
  }
  void write(const Date& date) {
    tag(Tag::Date);
    out_ += static_cast<char>((date.year ? kHasYear : 0) | (date.month ? kHasMonth : 0) |
                              (date.day ? kHasDay : 0) | (date.secondOfDay ? kHasTime : 0) |
                              (date.utcOffsetMinutes ? kHasOffset : 0));
    if (date.year) raw(*date.year);
    if (date.month) raw(*date.month);
    if (date.day) raw(*date.day);
    if (date.secondOfDay) raw(*date.secondOfDay);
    if (date.utcOffsetMinutes) raw(*date.utcOffsetMinutes);
  }
  void write(const Data& data) {
    tag(Tag::Data);
    bytes(*data);
  }
  void write(const Object::ArrayPtr& array) {
    tag(Tag::Array);
    number(array->size());
    for (const auto& element : *array) object(element);
  }
  void write(const Object::DictionaryPtr& dictionary) {
    tag(Tag::Dictionary);
    number(dictionary->size());
    std::vector<const Dictionary::Entry*> entries;
    entries.reserve(dictionary->size());
    for (const auto& entry : dictionary->entries()) entries.push_back(&entry);
    // Dictionaries are equal in any order, so what is compared has one.
    if (identifiers_ == Identifiers::LeaveOut) {
      std::sort(entries.begin(), entries.end(),
                [](const auto* a, const auto* b) { return a->first < b->first; });
    }
    for (const auto* entry : entries) {
      bytes(entry->first);
      object(entry->second);
    }
  }
  void write(const ImagePtr&) { notStorable(); }
  void write(const Object::HostObjectPtr&) { notStorable(); }

  [[noreturn]] static void notStorable() {
    throw std::invalid_argument("images and host objects cannot be stored as property values");
  }

  Identifiers identifiers_;
  std::string out_;
};

class Decoder {
 public:
  explicit Decoder(std::string_view bytes) : rest_(bytes) {}

  bool atEnd() const { return rest_.empty(); }

  std::pair<PropertyId, PropertyValue> property() {
    const auto id = number();
    if (id != 0) return {checkedId(id), value()};
    const auto name = bytes();
    const auto type = static_cast<ABPropertyType>(number());
    auto known = property_table::idOf(RecordKind::Person, name);
    if (known == 0) known = property_table::add(name, type);
    if (known == 0) corrupt();
    return {known, value()};
  }

 private:
  [[noreturn]] static void corrupt() {
    throw DamagedRecord("the stored values of a record are damaged");
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

std::string encodeProperties(const PropertyBag& properties) {
  Encoder encoder(Identifiers::Keep);
  auto& out = encoder.out();
  out.reserve(512);
  out += kVersion;
  for (const auto& [id, value] : properties.entries()) encoder.property(id, value);
  const auto checksum = checksum64(out);
  char buffer[kChecksumSize];
  std::memcpy(buffer, &checksum, kChecksumSize);
  out.append(buffer, kChecksumSize);
  return std::move(out);
}

PropertyBag decodeProperties(std::string_view bytes, std::size_t mostProperties) {
  const auto damaged = [](const char* why) {
    throw DamagedRecord(std::string("the stored values of a record ") + why);
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
  return properties;
}

namespace {

// What a record says, without the UID of its card and that property.
std::string spoken(const PropertyBag& properties, PropertyId leftOut,
                   std::uint64_t pictureChecksum) {
  Encoder encoder(Identifiers::LeaveOut);
  auto& out = encoder.out();
  out.reserve(512);
  for (const auto& [id, value] : properties.entries()) {
    if (id != property_id::kCardUid && id != leftOut) encoder.property(id, value);
  }
  out.append(reinterpret_cast<const char*>(&pictureChecksum), sizeof pictureChecksum);
  return std::move(out);
}

}  // namespace

std::uint64_t contentFingerprint(const PropertyBag& properties, const Data& image) {
  return contentFingerprint(properties, image ? checksum64(*image) : 0);
}

std::uint64_t contentFingerprint(const PropertyBag& properties, std::uint64_t pictureChecksum) {
  return checksum64(spoken(properties, 0, pictureChecksum));
}

std::uint64_t fingerprintWithout(PropertyId leftOut, const PropertyBag& properties) {
  return checksum64(spoken(properties, leftOut, 0));
}

bool sameContent(const PropertyBag& a, const PropertyBag& b) {
  return spoken(a, 0, 0) == spoken(b, 0, 0);
}

}  // namespace ox
