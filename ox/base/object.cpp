#include "ox/base/object.hpp"

#include <algorithm>
#include <cassert>

namespace ox {
namespace {

// Equality of two held values of one kind: shared kinds are compared by what they point to.
struct SameContent {
  template <typename T>
  bool operator()(const T& a, const T& b) const {
    return a == b;
  }
  template <typename T>
  bool operator()(const std::shared_ptr<const T>& a, const std::shared_ptr<const T>& b) const {
    assert(a && b && "a null pointer is held as a missing object");
    return a == b || *a == *b;
  }
  bool operator()(const Object::HostObjectPtr& a, const Object::HostObjectPtr& b) const {
    assert(a && b && "a null pointer is held as a missing object");
    return a == b || a->equals(*b);
  }
};

template <typename Pointer>
const typename Pointer::element_type* pointee(const Object& object) {
  const auto* held = object.as<Pointer>();
  return held ? held->get() : nullptr;
}

}  // namespace

const Dictionary* Object::dictionary() const {
  return pointee<DictionaryPtr>(*this);
}

const Array* Object::array() const {
  return pointee<ArrayPtr>(*this);
}

ImagePtr Object::image() const {
  const auto* held = as<ImagePtr>();
  return held ? *held : nullptr;
}

Data Object::data() const {
  const auto* held = as<Data>();
  return held ? *held : nullptr;
}

bool operator==(const Object& a, const Object& b) {
  if (a.storage_.index() != b.storage_.index()) return false;
  return std::visit(
      [&](const auto& held) {
        using Held = std::decay_t<decltype(held)>;
        return SameContent{}(held, std::get<Held>(b.storage_));
      },
      a.storage_);
}

Dictionary::Dictionary(std::initializer_list<Entry> entries) {
  for (const auto& [key, value] : entries) set(key, value);
}

void Dictionary::set(std::string_view key, Object value) {
  for (auto& entry : entries_) {
    if (entry.first == key) {
      entry.second = std::move(value);
      return;
    }
  }
  entries_.emplace_back(std::string(key), std::move(value));
}

const Object& Dictionary::get(std::string_view key) const {
  static const auto& missing = *new Object;
  const auto found = std::find_if(entries_.begin(), entries_.end(),
                                  [&](const Entry& entry) { return entry.first == key; });
  return found == entries_.end() ? missing : found->second;
}

bool Dictionary::contains(std::string_view key) const {
  return std::any_of(entries_.begin(), entries_.end(),
                     [&](const Entry& entry) { return entry.first == key; });
}

bool operator==(const Dictionary& a, const Dictionary& b) {
  if (a.size() != b.size()) return false;
  return std::all_of(a.entries_.begin(), a.entries_.end(), [&](const Dictionary::Entry& entry) {
    return b.contains(entry.first) && b.get(entry.first) == entry.second;
  });
}

}  // namespace ox
