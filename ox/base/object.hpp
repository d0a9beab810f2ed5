#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "ox/base/data.hpp"
#include "ox/base/date.hpp"
#include "ox/base/export.hpp"
#include "ox/base/image.hpp"
#include "ox/base/text.hpp"

namespace ox {

// What a layer above puts into an Object without the layers below knowing it. Shared, immutable
// through this handle.
class OX_EXPORT HostObject {
 public:
  HostObject() = default;
  HostObject(const HostObject&) = default;
  HostObject& operator=(const HostObject&) = default;
  virtual ~HostObject() = default;

  // Same kind and same content.
  virtual bool equals(const HostObject& other) const = 0;
};

class Object;
class Dictionary;
using Array = std::vector<Object>;

// What a property or an element holds: nothing, or exactly one of the kinds below. A value: copied
// freely (the large kinds are shared and immutable) and compared by content.
class OX_EXPORT Object {
 public:
  using ArrayPtr = std::shared_ptr<const Array>;
  using DictionaryPtr = std::shared_ptr<const Dictionary>;
  using HostObjectPtr = std::shared_ptr<const HostObject>;
  using Storage = std::variant<std::monostate, std::string, std::int64_t, double, Date, Data,
                               ArrayPtr, DictionaryPtr, ImagePtr, HostObjectPtr>;

  Object() = default;
  Object(const Object& other) : storage_(copyOf(other.storage_)) {}
  Object(Object&& other) noexcept = default;
  Object& operator=(const Object& other) = default;
  Object& operator=(Object&& other) noexcept = default;
  ~Object() = default;
  Object(std::string text) : storage_(std::move(text)) {}
  Object(const char* text) : storage_(std::string(text)) {}
  Object(std::string_view text) : storage_(std::string(text)) {}
  Object(TextView text) {
    if (text) storage_ = std::string(*text);
  }
  Object(const Text& text) : Object(TextView(text)) {}
  Object(std::int64_t number) : storage_(number) {}
  Object(double number) : storage_(number) {}
  Object(const Date& date) : storage_(date) {}
  Object(Data data) : storage_(held(std::move(data))) {}
  Object(ImagePtr image) : storage_(held(std::move(image))) {}
  Object(Array array) : storage_(std::make_shared<const Array>(std::move(array))) {}
  Object(ArrayPtr array) : storage_(held(std::move(array))) {}
  Object(Dictionary dictionary);
  Object(DictionaryPtr dictionary) : storage_(held(std::move(dictionary))) {}
  Object(HostObjectPtr object) : storage_(held(std::move(object))) {}
  template <typename T>
  requires std::is_base_of_v<HostObject, T> Object(std::shared_ptr<T> object)
      : storage_(held(HostObjectPtr(std::move(object)))) {}

  bool isMissing() const { return std::holds_alternative<std::monostate>(storage_); }
  const Storage& storage() const { return storage_; }

  // The held value when it is of that kind, else null. Borrowed from this object.
  template <typename T>
  const T* as() const {
    return std::get_if<T>(&storage_);
  }
  const std::string* text() const { return as<std::string>(); }
  // The held text, or missing when it is of another kind.
  Text toText() const { return text() ? Text(*text()) : std::nullopt; }
  const Dictionary* dictionary() const;
  const Array* array() const;
  ImagePtr image() const;
  Data data() const;
  // The held host object when it is a T, else null.
  template <typename T>
  std::shared_ptr<const T> host() const {
    const auto* held = as<HostObjectPtr>();
    return held ? std::dynamic_pointer_cast<const T>(*held) : nullptr;
  }

  friend OX_EXPORT bool operator==(const Object& a, const Object& b);

 private:
  // A null pointer is a missing object, never a held null.
  template <typename Pointer>
  static Storage held(Pointer pointer) {
    if (!pointer) return {};
    return Storage(std::in_place_type<Pointer>, std::move(pointer));
  }

  // The variant of g++ 12 destroys what its own copy constructor did not get to make when a text
  // finds no memory.
  static Storage copyOf(const Storage& storage) {
    const auto* text = std::get_if<std::string>(&storage);
    return text != nullptr ? Storage(std::in_place_type<std::string>, *text) : storage;
  }

  Storage storage_;
};

// An ordered dictionary with text keys; enumerates in the order of insertion. Equality does not
// look at the order. Most are small and looked through; a large one keeps an index.
class OX_EXPORT Dictionary {
 public:
  using Entry = std::pair<std::string, Object>;

  Dictionary() = default;
  Dictionary(std::initializer_list<Entry> entries);

  // Replaces an existing entry in place, else appends.
  void set(std::string_view key, Object value);
  // The value under the key; a missing object when there is none.
  const Object& get(std::string_view key) const;
  bool contains(std::string_view key) const;
  // Makes room for so many entries.
  void reserve(std::size_t count) { entries_.reserve(count); }
  const std::vector<Entry>& entries() const { return entries_; }
  bool empty() const { return entries_.empty(); }
  std::size_t size() const { return entries_.size(); }

  friend OX_EXPORT bool operator==(const Dictionary& a, const Dictionary& b);

 private:
  static constexpr std::uint32_t kFree = 0;

  // The entry of that key; null when there is none.
  const Entry* find(std::string_view key) const;
  std::size_t slotOf(std::string_view key) const;
  void makeRoom();

  std::vector<Entry> entries_;
  // Of a large one: a table of places in entries_, counted from one, by the hashes of their keys.
  std::vector<std::uint32_t> slots_;
};

inline Object::Object(Dictionary dictionary)
    : storage_(std::make_shared<const Dictionary>(std::move(dictionary))) {}

}  // namespace ox
