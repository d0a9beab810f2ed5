#include "ox/records/property_codec.hpp"

#include <algorithm>
#include <array>
#include <cassert>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <variant>
#include <vector>

#include "ox/base/checksum.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/records/property_code.hpp"

namespace ox {
namespace {

using namespace property_code;

enum class Identifiers { Keep, LeaveOut };

// Every card is encoded several times while it is imported, so nearly all find room in the encoder
// itself.
class Encoder {
 public:
  explicit Encoder(Identifiers identifiers) : identifiers_(identifiers) {}
  Encoder(const Encoder&) = delete;
  Encoder& operator=(const Encoder&) = delete;

  void property(PropertyId id, const PropertyValue& value) {
    // A number that a later version gave out is kept with what it holds.
    assert(id != 0 && !isMissing(value));
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

  void object(const Object& object) {
    // Nearly every one is a text.
    if (const auto* text = object.text()) {
      write(*text);
    } else {
      std::visit([this](const auto& held) { write(held); }, object.storage());
    }
  }

  void byte(std::uint8_t value) {
    *room(1) = static_cast<char>(value);
    ++size_;
  }

  // The number as it lies in memory.
  template <typename T>
  void raw(T value) {
    std::memcpy(room(sizeof value), &value, sizeof value);
    size_ += sizeof value;
  }

  // What was written so far. Borrowed until the next is written.
  std::string_view written() const { return {start_, size_}; }

 private:
  // The place of the next byte; so many find room there.
  char* room(std::size_t count) {
    assert(size_ <= capacity_);
    if (count > capacity_ - size_) grow(count);
    assert(count <= capacity_ - size_);
    return start_ + size_;
  }

  void grow(std::size_t count) {
    const auto wanted = std::max(2 * capacity_, size_ + count);
    auto larger = std::make_unique_for_overwrite<char[]>(wanted);
    std::memcpy(larger.get(), start_, size_);
    larger_ = std::move(larger);
    start_ = larger_.get();
    capacity_ = wanted;
  }

  void tag(Tag tag) { byte(static_cast<std::uint8_t>(tag)); }

  void number(std::uint64_t value) {
    while (value >= 0x80) {
      byte(static_cast<std::uint8_t>(value | 0x80));
      value >>= 7U;
    }
    byte(static_cast<std::uint8_t>(value));
  }

  void signedNumber(std::int64_t value) {
    number((static_cast<std::uint64_t>(value) << 1U) ^ static_cast<std::uint64_t>(value >> 63));
  }

  void append(std::string_view text) {
    text.copy(room(text.size()), text.size());
    size_ += text.size();
  }

  void bytes(std::string_view text) {
    number(text.size());
    append(text);
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
      if (entry.label) append(*entry.label);
      object(entry.value);
    }
  }

  void entry(const Dictionary::Entry& entry) {
    bytes(entry.first);
    object(entry.second);
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
    byte(static_cast<std::uint8_t>((date.year ? kHasYear : 0) | (date.month ? kHasMonth : 0) |
                                   (date.day ? kHasDay : 0) | (date.secondOfDay ? kHasTime : 0) |
                                   (date.utcOffsetMinutes ? kHasOffset : 0)));
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
    if (identifiers_ == Identifiers::Keep) {
      for (const auto& each : dictionary->entries()) entry(each);
      return;
    }
    // Dictionaries are equal in any order, so what is compared has one.
    std::vector<const Dictionary::Entry*> entries;
    entries.reserve(dictionary->size());
    for (const auto& each : dictionary->entries()) entries.push_back(&each);
    std::sort(entries.begin(), entries.end(),
              [](const auto* a, const auto* b) { return a->first < b->first; });
    for (const auto* each : entries) entry(*each);
  }
  void write(const ImagePtr&) { notStorable(); }
  void write(const Object::HostObjectPtr&) { notStorable(); }

  [[noreturn]] static void notStorable() {
    throw std::invalid_argument("images and host objects cannot be stored as property values");
  }

  Identifiers identifiers_;
  std::array<char, 1024> own_;
  std::unique_ptr<char[]> larger_;  // when they do not find room there
  char* start_ = own_.data();
  std::size_t capacity_ = own_.size();
  std::size_t size_ = 0;
};

// What a record says, without the UID of its card and that property.
void encodeSpoken(const PropertyBag& properties, PropertyId leftOut, std::uint64_t pictureChecksum,
                  Encoder& encoder) {
  for (const auto& [id, value] : properties.entries()) {
    if (id != property_id::kCardUid && id != leftOut) encoder.property(id, value);
  }
  encoder.raw(pictureChecksum);
}

std::uint64_t fingerprint(const PropertyBag& properties, PropertyId leftOut,
                          std::uint64_t pictureChecksum) {
  Encoder encoder(Identifiers::LeaveOut);
  encodeSpoken(properties, leftOut, pictureChecksum, encoder);
  return checksum64(encoder.written());
}

}  // namespace

std::string encodeProperties(const PropertyBag& properties) {
  Encoder encoder(Identifiers::Keep);
  encoder.byte(kVersion);
  for (const auto& [id, value] : properties.entries()) encoder.property(id, value);
  const auto checksum = checksum64(encoder.written());
  static_assert(sizeof checksum == kChecksumSize);
  encoder.raw(checksum);
  return std::string(encoder.written());
}

std::uint64_t contentFingerprint(const PropertyBag& properties, const Data& image) {
  return contentFingerprint(properties, image ? checksum64(*image) : 0);
}

std::uint64_t contentFingerprint(const PropertyBag& properties, std::uint64_t pictureChecksum) {
  return fingerprint(properties, 0, pictureChecksum);
}

std::uint64_t fingerprintWithout(PropertyId leftOut, const PropertyBag& properties) {
  return fingerprint(properties, leftOut, 0);
}

std::uint64_t valueFingerprint(const Object& value) {
  Encoder encoder(Identifiers::LeaveOut);
  encoder.object(value);
  return checksum64(encoder.written());
}

bool sameContent(const PropertyBag& a, const PropertyBag& b) {
  Encoder left(Identifiers::LeaveOut);
  Encoder right(Identifiers::LeaveOut);
  encodeSpoken(a, 0, 0, left);
  encodeSpoken(b, 0, 0, right);
  return left.written() == right.written();
}

}  // namespace ox
