#include "ox/records/search_query.hpp"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "ox/base/text/case.hpp"
#include "ox/base/text/digits.hpp"

namespace ox {
namespace {

constexpr std::size_t kLeastDigits = 3;
// What is beyond comes from somebody's clipboard, not from a memory of a person.
constexpr std::size_t kMostWords = 64;

struct Word {
  std::string text;
  bool isQuoted = false;
};

std::vector<Word> wordsOf(std::string_view typed, SearchQuery::In in) {
  std::vector<Word> words;
  Word word;
  bool inQuotes = false;
  const auto end = [&] {
    if (!word.text.empty()) words.push_back(word);
    word = {};
  };
  for (std::size_t at = 0; at < typed.size() && words.size() < kMostWords;) {
    const auto blank = blankAt(typed, at);
    if (typed[at] == '"' && in == SearchQuery::In::KnownFields) {
      inQuotes = !inQuotes;
      word.isQuoted = true;
      ++at;
    } else if (blank > 0 && !inQuotes) {
      end();
      at += blank;
    } else {
      word.text += typed[at++];
    }
  }
  end();
  return words;
}

// How many digits the prefix of the country has that such a number begins with (ITU-T E.164).
std::size_t countryDigits(std::string_view international) {
  constexpr std::array<std::string_view, 10> kTwoDigits = {
      "", "", "07", "0123469", "013456789", "12345678", "0123456", "", "1246", "0123458"};
  if (international.empty()) return 0;
  const char zone = international[0];
  if (zone == '1' || zone == '7') return 1;
  if (international.size() < 2) return international.size();
  const auto seconds = kTwoDigits[static_cast<std::size_t>(zone - '0')];
  return std::min<std::size_t>(seconds.find(international[1]) == std::string_view::npos ? 3 : 2,
                               international.size());
}

std::string_view withoutTrunkZeros(std::string_view digits) {
  return digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
}

// What stands in every form of that number.
std::string_view coreOf(std::string_view number) {
  if (!number.starts_with('+')) return withoutTrunkZeros(number);
  number.remove_prefix(1);
  return withoutTrunkZeros(number.substr(countryDigits(number)));
}

std::string_view countryOf(std::string_view international) {
  return international.substr(1, countryDigits(international.substr(1)));
}

bool isWithin(std::string_view part, std::string_view stored) {
  return stored.find(part) != std::string_view::npos;
}

bool isOfNumber(std::string_view sought, std::string_view stored) {
  const bool bothTellCountry = sought.starts_with('+') && stored.starts_with('+');
  if (bothTellCountry && countryOf(sought) != countryOf(stored)) return false;
  return isWithin(coreOf(sought), stored);
}

SearchQuery::Grams gramsOf(const std::vector<std::string>& texts) {
  std::set<std::size_t> grams;
  for (const auto& text : texts) {
    forEachGram(text, [&](std::size_t gram) { grams.insert(gram); });
  }
  return {grams.begin(), grams.end()};
}

std::vector<SearchField> knownFields() {
  std::vector<SearchField> fields;
  for (auto field = SearchField::Name; field <= kLastSearchedField;
       field = static_cast<SearchField>(static_cast<char>(field) + 1)) {
    fields.push_back(field);
  }
  return fields;
}

// The line of a text that begins there, which is then moved past it: a field and what it holds.
std::pair<SearchField, std::string_view> nextLine(std::string_view& text) {
  const auto end = std::min(text.find('\n'), text.size() - 1);
  const std::pair line(static_cast<SearchField>(text[0]), text.substr(1, end - 1));
  text.remove_prefix(end + 1);
  return line;
}

}  // namespace

SearchQuery::SearchQuery(std::string_view typed, In in) {
  const auto words = wordsOf(typed, in);
  if (in == In::Names) {
    const auto names = fieldsNamed("name");
    for (const auto& word : words) {
      add({{foldedForSearch(word.text)}, "", {names.begin(), names.end()}});
    }
    return;
  }
  for (std::size_t at = 0; at < words.size();) {
    const auto from = at;
    while (at < words.size() && !words[at].isQuoted && isOfDigits(words[at].text)) ++at;
    if (at > from) {
      Term term{{}, "", knownFields()};
      std::string together;
      for (auto i = from; i < at; ++i) {
        together += words[i].text + " ";
        if (!decimalDigits(words[i].text).empty()) {
          term.texts.push_back(foldedForSearch(words[i].text));
        }
      }
      term.number = searchedDigits(together);
      add(std::move(term));
    } else {
      addWord(words[at++].text);
    }
  }
}

void SearchQuery::addWord(const std::string& word) {
  const auto colon = word.find(':');
  const auto named = colon == std::string::npos
                         ? std::span<const SearchField>()
                         : fieldsNamed(foldedForSearch(word.substr(0, colon)));
  if (named.empty()) return add({{foldedForSearch(word)}, "", knownFields()});
  const auto text = word.substr(colon + 1);
  Term term{{foldedForSearch(text)}, "", {named.begin(), named.end()}};
  if (isOfDigits(text)) term.number = searchedDigits(text);
  add(std::move(term));
}

// What folds to nothing is no word, and the same word again asks for nothing more.
void SearchQuery::add(Term term) {
  std::erase_if(term.texts, [](const std::string& text) { return text.empty(); });
  if (coreOf(term.number).size() < kLeastDigits) term.number.clear();
  if (term.texts.empty() && term.number.empty()) return;
  if (std::ranges::find(terms_, term) == terms_.end()) terms_.push_back(std::move(term));
}

bool SearchQuery::holdsNumber(const Term& term, std::string_view text) {
  if (term.number.empty() || !isWithin(coreOf(term.number), text)) return false;
  if (std::ranges::find(term.fields, SearchField::Phone) == term.fields.end()) return false;
  while (!text.empty()) {
    const auto [field, line] = nextLine(text);
    if (field == SearchField::Phone && isOfNumber(term.number, line)) return true;
  }
  return false;
}

bool SearchQuery::holdsText(const Term& term, const std::string& sought, std::string_view text) {
  // Most of those that an index may hold are told from the others at once.
  if (!isWithin(sought, text)) return false;
  while (!text.empty()) {
    const auto [field, line] = nextLine(text);
    const bool isMeant = std::ranges::find(term.fields, field) != term.fields.end();
    if (isMeant && isWithin(sought, line)) return true;
  }
  return false;
}

bool SearchQuery::matches(std::string_view text) const {
  const auto occurs = [&](const Term& term) {
    if (holdsNumber(term, text)) return true;
    return !term.texts.empty() && std::ranges::all_of(term.texts, [&](const std::string& sought) {
      return holdsText(term, sought, text);
    });
  };
  return !empty() && std::ranges::all_of(terms_, occurs);
}

std::vector<std::vector<SearchQuery::Grams>> SearchQuery::grams() const {
  std::vector<std::vector<Grams>> all;
  for (const auto& term : terms_) {
    std::vector<Grams> either;
    if (!term.texts.empty()) either.push_back(gramsOf(term.texts));
    if (!term.number.empty()) either.push_back(gramsOf({std::string(coreOf(term.number))}));
    all.push_back(std::move(either));
  }
  return all;
}

}  // namespace ox
