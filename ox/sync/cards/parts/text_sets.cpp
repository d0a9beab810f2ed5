#include "ox/sync/cards/parts/text_sets.hpp"

#include <algorithm>
#include <iterator>
#include <unordered_set>

#include "ox/vcard/lines/ascii.hpp"

namespace ox::sync {
namespace {

std::unordered_set<std::string> keysOf(const std::vector<std::string>& texts, Case letters) {
  std::unordered_set<std::string> keys;
  for (const auto& text : texts) keys.insert(textKey(text, letters));
  return keys;
}

}  // namespace

std::string textKey(const std::string& text, Case letters) {
  auto key = text;
  if (letters == Case::CountsNot) {
    std::transform(key.begin(), key.end(), key.begin(), vcard::upper);
  }
  return key;
}

bool areSameTexts(const std::vector<std::string>& a, const std::vector<std::string>& b,
                  Case letters) {
  return keysOf(a, letters) == keysOf(b, letters);
}

std::vector<std::string> textsWithout(const std::vector<std::string>& texts,
                                      const std::vector<std::string>& others, Case letters) {
  const auto keys = keysOf(others, letters);
  std::vector<std::string> rest;
  std::copy_if(texts.begin(), texts.end(), std::back_inserter(rest),
               [&](const auto& text) { return !keys.contains(textKey(text, letters)); });
  return rest;
}

std::vector<std::string> withChanges(const std::vector<std::string>& texts,
                                     const std::vector<std::string>& before,
                                     const std::vector<std::string>& now, Case letters) {
  auto result = textsWithout(texts, textsWithout(before, now, letters), letters);
  for (auto& text : textsWithout(textsWithout(now, before, letters), result, letters)) {
    result.push_back(std::move(text));
  }
  return result;
}

}  // namespace ox::sync
