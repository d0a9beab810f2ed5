#include "ox/records/clean_text.hpp"

#include <algorithm>
#include <cassert>
#include <memory>
#include <utility>
#include <vector>

#include "ox/base/text/utf8.hpp"

namespace ox {
namespace {

bool isClean(const Object& object);

bool isClean(const Text& text) {
  return !text || isValidUtf8(*text);
}

bool isClean(const Object& object) {
  if (const auto* text = object.text()) return isValidUtf8(*text);
  if (const auto* array = object.array()) {
    return std::all_of(array->begin(), array->end(),
                       [](const Object& element) { return isClean(element); });
  }
  if (const auto* dictionary = object.dictionary()) {
    const auto& entries = dictionary->entries();
    return std::all_of(entries.begin(), entries.end(), [](const Dictionary::Entry& entry) {
      return isValidUtf8(entry.first) && isClean(entry.second);
    });
  }
  return true;
}

bool isClean(const MultiValue& values) {
  return std::all_of(values.entries.begin(), values.entries.end(), [](const MultiEntry& entry) {
    return isClean(entry.label) && isClean(entry.value);
  });
}

Object cleaned(const Object& object) {
  if (isClean(object)) return object;
  if (const auto* text = object.text()) return validUtf8(*text);
  if (const auto* array = object.array()) {
    Array elements;
    elements.reserve(array->size());
    for (const auto& element : *array) elements.push_back(cleaned(element));
    return elements;
  }
  assert(object.dictionary() != nullptr && "nothing else holds text");
  Dictionary dictionary;
  for (const auto& [key, value] : object.dictionary()->entries()) {
    dictionary.set(validUtf8(key), cleaned(value));
  }
  return dictionary;
}

bool isClean(const PropertyValue& value) {
  if (const auto* single = std::get_if<Object>(&value)) return isClean(*single);
  return isClean(*std::get<MultiValuePtr>(value));
}

}  // namespace

void cleanText(PropertyValue& value) {
  if (isClean(value)) return;
  if (auto* single = std::get_if<Object>(&value)) {
    *single = cleaned(*single);
    return;
  }
  auto copy = std::make_shared<MultiValue>(*std::get<MultiValuePtr>(value));
  for (auto& entry : copy->entries) {
    if (entry.label) entry.label = validUtf8(*entry.label);
    entry.value = cleaned(entry.value);
  }
  value = MultiValuePtr(std::move(copy));
}

bool cleanText(PropertyBag& properties) {
  std::vector<PropertyBag::Entry> unclean;
  for (const auto& entry : properties.entries()) {
    if (!isClean(entry.second)) unclean.push_back(entry);
  }
  for (auto& [id, value] : unclean) {
    cleanText(value);
    properties.set(id, std::move(value));
  }
  return !unclean.empty();
}

}  // namespace ox
