#include "ox/OxMacAddressBookSDK/persons/likely_duplicates.hpp"

#include <algorithm>
#include <map>
#include <sstream>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "ox/base/text/case.hpp"
#include "ox/base/text/digits.hpp"
#include "ox/base/text/joined.hpp"
#include "ox/base/text/keyed_hash.hpp"

namespace ox {
namespace {

constexpr std::size_t kMostSharing = 8;
constexpr std::size_t kPhoneTail = 8;
constexpr std::size_t kShortestPhone = 5;
// A letter more or less makes another name of a short one.
constexpr std::size_t kShortestNearName = 6;
constexpr std::size_t kLongestNearName = 60;

// Folded, without the signs that stand about names.
std::vector<std::string> wordsOf(const std::string& name) {
  auto folded = foldedForSearch(name);
  std::ranges::replace_if(
      folded, [](char c) { return c == '.' || c == ',' || c == '-' || c == '\''; }, ' ');
  std::vector<std::string> words;
  std::istringstream text(folded);
  for (std::string word; text >> word;) words.push_back(std::move(word));
  return words;
}

// The characters of the text, which is well-formed UTF-8.
std::vector<std::string_view> lettersOf(std::string_view text) {
  std::vector<std::string_view> letters;
  for (std::size_t at = 0; at < text.size();) {
    auto end = at + 1;
    while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) ++end;
    letters.push_back(text.substr(at, end - at));
    at = end;
  }
  return letters;
}

// Numbers with and without the country's prefix end alike.
std::string phoneKey(const std::string& phone) {
  auto digits = decimalDigits(phone);
  if (digits.size() < kShortestPhone) return {};
  if (digits.size() > kPhoneTail) digits.erase(0, digits.size() - kPhoneTail);
  return digits;
}

// One of them may lack the country's prefix, and have a zero in its place.
bool isSameNumber(const std::string& one, const std::string& other) {
  const auto significant = [](const std::string& phone) {
    auto digits = decimalDigits(phone);
    return digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
  };
  const auto a = significant(one);
  const auto b = significant(other);
  if (a.size() < kPhoneTail || b.size() < kPhoneTail) return a == b;
  return a.ends_with(b) || b.ends_with(a);
}

int weightOf(Likeness likeness) {
  switch (likeness) {
    case Likeness::SameName:
    case Likeness::SameEmail:
      return 3;
    case Likeness::SamePhone:
      return 2;
    case Likeness::NearName:
      return 1;
  }
  return 0;
}

class Search {
 public:
  explicit Search(const std::vector<KnownBy>& persons) : persons_(persons) {
    for (const auto& person : persons) {
      auto& words = words_.emplace_back(wordsOf(person.name));
      auto sorted = words;
      std::ranges::sort(sorted);
      nameKeys_.push_back(joined(sorted, " "));
    }
  }

  std::vector<LikelyDuplicate> run() {
    findSameNames();
    findShared(
        Likeness::SameEmail, &KnownBy::emails,
        [](const std::string& email) { return foldedForSearch(email); },
        [](const std::string&, const std::string&) { return true; });
    findShared(Likeness::SamePhone, &KnownBy::phones, phoneKey, isSameNumber);
    findNearNames();
    return likeliestFirst();
  }

 private:
  void add(std::size_t one, std::size_t other, Likeness likeness, const std::string& shared) {
    if (one == other) return;
    auto& reasons = found_[std::minmax(one, other)];
    const bool isKnown = std::ranges::any_of(reasons, [&](const LikelyDuplicate::Reason& reason) {
      return reason.likeness == likeness;
    });
    if (!isKnown) reasons.push_back({likeness, shared});
  }

  void findSameNames() {
    std::unordered_map<std::string, std::size_t> first;
    for (std::size_t i = 0; i < persons_.size(); ++i) {
      if (nameKeys_[i].empty()) continue;
      const auto [known, isNew] = first.emplace(nameKeys_[i], i);
      if (!isNew) add(known->second, i, Likeness::SameName, persons_[known->second].name);
    }
  }

  // Of those whose keys are equal, the ones that are the same.
  template <typename KeyOf, typename IsSame>
  void findShared(Likeness likeness, std::vector<std::string> KnownBy::*values, KeyOf keyOf,
                  IsSame isSame) {
    struct Holder {
      std::size_t place;
      const std::string* text;
    };
    std::unordered_map<std::string, std::vector<Holder>> holders;
    for (std::size_t i = 0; i < persons_.size(); ++i) {
      for (const auto& text : persons_[i].*values) {
        const auto key = keyOf(text);
        if (key.empty()) continue;
        auto& known = holders[key];
        if (known.empty() || known.back().place != i) known.push_back({i, &text});
      }
    }
    for (const auto& [key, known] : holders) {
      if (known.size() > kMostSharing) continue;
      for (std::size_t one = 0; one < known.size(); ++one) {
        for (std::size_t other = one + 1; other < known.size(); ++other) {
          if (!isSame(*known[one].text, *known[other].text)) continue;
          add(known[one].place, known[other].place, likeness, *known[one].text);
        }
      }
    }
  }

  // What two near names have in common, as a number that is quickly sorted: equal ones are looked
  // at closely.
  struct NearKey {
    std::uint64_t hash;
    std::size_t place;
    bool operator==(const NearKey&) const = default;
    bool operator<(const NearKey& other) const {
      return hash != other.hash ? hash < other.hash : place < other.place;
    }
  };

  void addNearKeys(std::size_t place, std::vector<NearKey>& keys) const {
    const auto add = [&](const std::string& text) { keys.push_back({keyedHash(text), place}); };
    const auto& words = words_[place];
    const auto whole = joined(words, "");
    add(whole);
    if (!persons_[place].latinName.empty()) add(joined(wordsOf(persons_[place].latinName), ""));
    const auto letters = lettersOf(whole);
    if (letters.size() >= kShortestNearName && letters.size() <= kLongestNearName) {
      for (const auto letter : letters) {
        const auto at = static_cast<std::size_t>(letter.data() - whole.data());
        add(whole.substr(0, at) + whole.substr(at + letter.size()));
      }
    }
    for (std::size_t i = 0; words.size() >= 3 && words.size() <= 6 && i < words.size(); ++i) {
      auto fewer = words;
      fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(i));
      add(joined(fewer, ""));
    }
  }

  // One letter changed, added or left out, or two beside each other in the other order.
  bool isNearLetters(std::size_t one, std::size_t other) const {
    const auto text = joined(words_[one], "");
    const auto otherText = joined(words_[other], "");
    const auto a = lettersOf(text);
    const auto b = lettersOf(otherText);
    if (a.size() < kShortestNearName || b.size() < kShortestNearName) return false;
    std::size_t front = 0;
    while (front < a.size() && front < b.size() && a[front] == b[front]) ++front;
    std::size_t back = 0;
    while (back < a.size() - front && back < b.size() - front &&
           a[a.size() - 1 - back] == b[b.size() - 1 - back]) {
      ++back;
    }
    const auto left = a.size() - front - back;
    const auto right = b.size() - front - back;
    if (left <= 1 && right <= 1) return true;
    return left == 2 && right == 2 && a[front] == b[front + 1] && a[front + 1] == b[front];
  }

  bool isSameInLatin(std::size_t one, std::size_t other) const {
    const auto latin = [&](std::size_t place) {
      const auto& text = persons_[place].latinName;
      return joined(text.empty() ? words_[place] : wordsOf(text), "");
    };
    return latin(one) == latin(other);
  }

  // All words of the longer name but one, in their order; two at least.
  bool lacksOneWord(std::size_t one, std::size_t other) const {
    const auto& longer = words_[words_[one].size() < words_[other].size() ? other : one];
    const auto& shorter = words_[words_[one].size() < words_[other].size() ? one : other];
    if (shorter.size() < 2 || longer.size() != shorter.size() + 1) return false;
    std::size_t met = 0;
    for (const auto& word : longer) met += met < shorter.size() && word == shorter[met] ? 1 : 0;
    return met == shorter.size();
  }

  bool isNear(std::size_t one, std::size_t other) const {
    return isNearLetters(one, other) || isSameInLatin(one, other) || lacksOneWord(one, other);
  }

  void findNearNames() {
    std::vector<NearKey> keys;
    for (std::size_t i = 0; i < persons_.size(); ++i) {
      if (!words_[i].empty()) addNearKeys(i, keys);
    }
    std::sort(keys.begin(), keys.end());
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    for (std::size_t from = 0; from < keys.size();) {
      auto end = from + 1;
      while (end < keys.size() && keys[end].hash == keys[from].hash) ++end;
      // Many of one name are told beside the first one, by that.
      for (std::size_t one = from; end - from <= kMostSharing && one < end; ++one) {
        for (auto other = one + 1; other < end; ++other) {
          addNear(keys[one].place, keys[other].place);
        }
      }
      from = end;
    }
  }

  void addNear(std::size_t one, std::size_t other) {
    const bool isSame = nameKeys_[one] == nameKeys_[other];
    if (!isSame && isNear(one, other)) add(one, other, Likeness::NearName, persons_[other].name);
  }

  std::vector<LikelyDuplicate> likeliestFirst() {
    std::vector<LikelyDuplicate> list;
    for (auto& [pair, reasons] : found_) {
      std::ranges::sort(reasons, {}, &LikelyDuplicate::Reason::likeness);
      list.push_back({pair.first, pair.second, std::move(reasons)});
    }
    std::ranges::stable_sort(list, std::greater(), [](const LikelyDuplicate& each) {
      int weight = 0;
      for (const auto& reason : each.reasons) weight += weightOf(reason.likeness);
      return weight;
    });
    return list;
  }

  const std::vector<KnownBy>& persons_;
  std::vector<std::vector<std::string>> words_;  // of each name
  std::vector<std::string> nameKeys_;            // the same, sorted
  std::map<std::pair<std::size_t, std::size_t>, std::vector<LikelyDuplicate::Reason>> found_;
};

}  // namespace

std::vector<LikelyDuplicate> likelyDuplicates(const std::vector<KnownBy>& persons) {
  return Search(persons).run();
}

}  // namespace ox
