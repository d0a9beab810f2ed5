#pragma once

#include <cassert>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ox/base/text.hpp"

namespace ox {

// A dictionary that enumerates in the order of adding and finds by key in constant time.
template <typename T>
class KeyedList {
 public:
  using Entry = std::pair<std::string, std::shared_ptr<T>>;

  // Replaces the object of that key in its place, else appends.
  void set(std::string_view key, std::shared_ptr<T> object) {
    const auto [found, isNew] = places_.try_emplace(std::string(key), entries_.size());
    if (isNew) {
      entries_.emplace_back(std::string(key), std::move(object));
    } else {
      entries_[found->second].second = std::move(object);
    }
    assert(places_.size() == entries_.size() && entries_[found->second].first == key);
  }

  // Null when no object has that key.
  std::shared_ptr<T> objectForKey(TextView key) const {
    if (!key) return nullptr;
    const auto found = places_.find(std::string(*key));
    return found == places_.end() ? nullptr : entries_[found->second].second;
  }

  std::size_t count() const { return entries_.size(); }
  auto begin() const { return entries_.begin(); }
  auto end() const { return entries_.end(); }

 private:
  std::vector<Entry> entries_;
  std::unordered_map<std::string, std::size_t> places_;
};

}  // namespace ox
