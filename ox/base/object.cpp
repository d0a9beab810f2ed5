#include "ox/base/object.hpp"

#include <algorithm>
#include <bit>
#include <cassert>

#include "ox/base/text/keyed_hash.hpp"

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

// The slot that leads to the key, or the free one where it would.
std::size_t Dictionary::slotOf(std::string_view key) const {
  const auto last = slots_.size() - 1;
  auto slot = static_cast<std::size_t>(keyedHash(key)) & last;
  while (slots_[slot] != kFree && entries_[slots_[slot] - 1].first != key) {
    slot = (slot + 1) & last;
  }
  return slot;
}

// For one entry more: a table at most half full once there are more than a few.
void Dictionary::makeRoom() {
  constexpr std::size_t kFew = 8;
  const auto count = entries_.size() + 1;
  if (count <= kFew || count * 2 <= slots_.size()) return;
  slots_.assign(std::bit_ceil(count * 2), kFree);
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    slots_[slotOf(entries_[i].first)] = static_cast<std::uint32_t>(i + 1);
  }
}

const Dictionary::Entry* Dictionary::find(std::string_view key) const {
  if (!slots_.empty()) {
    const auto place = slots_[slotOf(key)];
    return place == kFree ? nullptr : &entries_[place - 1];
  }
  const auto found =
      std::ranges::find_if(entries_, [&](const Entry& entry) { return entry.first == key; });
  return found == entries_.end() ? nullptr : &*found;
}

void Dictionary::set(std::string_view key, Object value) {
  if (const auto* held = find(key)) {
    entries_[static_cast<std::size_t>(held - entries_.data())].second = std::move(value);
    return;
  }
  makeRoom();
  entries_.emplace_back(std::string(key), std::move(value));
  if (slots_.empty()) return;
  slots_[slotOf(key)] = static_cast<std::uint32_t>(entries_.size());
}

const Object& Dictionary::get(std::string_view key) const {
  static const auto& missing = *new Object;
  const auto* held = find(key);
  return held == nullptr ? missing : held->second;
}

bool Dictionary::contains(std::string_view key) const {
  return find(key) != nullptr;
}

bool operator==(const Dictionary& a, const Dictionary& b) {
  if (a.size() != b.size()) return false;
  return std::ranges::all_of(a.entries_, [&](const Dictionary::Entry& entry) {
    const auto* other = b.find(entry.first);
    return other != nullptr && other->second == entry.second;
  });
}

}  // namespace ox
