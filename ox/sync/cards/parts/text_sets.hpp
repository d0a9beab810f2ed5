#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ox::sync {

// Lists of texts as sets: tags, and the UIDs of members, whose case is spelling alone.
enum class Case : std::uint8_t { Counts, CountsNot };

// What a text is known by.
std::string textKey(const std::string& text, Case letters);
bool areSameTexts(const std::vector<std::string>& a, const std::vector<std::string>& b,
                  Case letters);
// Those of the first list that the second one has not.
std::vector<std::string> textsWithout(const std::vector<std::string>& texts,
                                      const std::vector<std::string>& others, Case letters);
// The list with what has changed between the other two: what is gone is gone from it, what is new
// stands at its end.
std::vector<std::string> withChanges(const std::vector<std::string>& texts,
                                     const std::vector<std::string>& before,
                                     const std::vector<std::string>& now, Case letters);

}  // namespace ox::sync
