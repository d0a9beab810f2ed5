#include "ox/records/search_query.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <set>
#include <utility>

#include "ox/base/text/case.hpp"

namespace ox {
namespace {

constexpr std::size_t kLeastDigits = 3;

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

struct Word {
  std::string text;
  bool isQuoted = false;
};

// The words of what was typed, with each blank of any script as one.
std::vector<Word> wordsOf(std::string_view typed, SearchQuery::In in) {
  std::vector<Word> words;
  Word word;
  bool inQuotes = false;
  const auto end = [&] {
    if (!word.text.empty()) words.push_back(word);
    word = {};
  };
  for (std::size_t at = 0; at < typed.size(); ++at) {
    const char c = typed[at];
    const bool isWideBlank = typed.substr(at).starts_with("\u3000");
    if (c == '"' && in == SearchQuery::In::KnownFields) {
      inQuotes = !inQuotes;
      word.isQuoted = true;
    } else if (!inQuotes && (isWideBlank || static_cast<unsigned char>(c) <= ' ')) {
      if (isWideBlank) at += 2;
      end();
    } else {
      word.text += c;
    }
  }
  end();
  return words;
}

// Digits with nothing but what is written between those of a telephone number.
bool isNumber(std::string_view text) {
  const auto isWrittenInNumbers = [](char c) {
    return isDigit(c) || std::string_view("+()-./ ").find(c) != std::string_view::npos;
  };
  return !text.empty() && std::ranges::all_of(text, isWrittenInNumbers) &&
         std::ranges::any_of(text, isDigit);
}

// That of several groups of digits; empty where there is anything else.
std::string numberOf(const std::vector<Word>& words) {
  std::string together;
  for (const auto& word : words) {
    if (word.isQuoted || !isNumber(word.text)) return {};
    together += word.text;
  }
  return words.size() > 1 ? searchedDigits(together) : std::string();
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

bool isWithin(std::string_view part, std::string_view stored) {
  return stored.find(part) != std::string_view::npos;
}

bool isOfNumber(std::string_view sought, std::string_view stored) {
  if (isWithin(sought, stored)) return true;
  const auto core = coreOf(sought);
  if (core.size() < kLeastDigits) return false;
  const bool bothTellCountry = sought.starts_with('+') && stored.starts_with('+');
  return !bothTellCountry && isWithin(core, stored);
}

SearchQuery::Grams gramsOf(std::string_view text) {
  std::set<std::size_t> grams;
  forEachGram(text, [&](std::size_t gram) { grams.insert(gram); });
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

}  // namespace

SearchQuery::SearchQuery(std::string_view typed, In in) {
  const auto words = wordsOf(typed, in);
  if (in == In::Names) {
    const auto names = fieldsNamed("name");
    for (const auto& word : words) {
      terms_.push_back({foldedForSearch(word.text), "", {names.begin(), names.end()}});
    }
    return;
  }
  if (const auto number = numberOf(words); coreOf(number).size() >= kLeastDigits) {
    terms_.push_back({"", number, {SearchField::Phone}});
    return;
  }
  for (const auto& word : words) {
    const auto colon = word.text.find(':');
    const auto named = colon == std::string::npos
                           ? std::span<const SearchField>()
                           : fieldsNamed(foldedForSearch(word.text.substr(0, colon)));
    const auto text = named.empty() ? word.text : word.text.substr(colon + 1);
    if (text.empty()) continue;
    Term term{foldedForSearch(text), "", {named.begin(), named.end()}};
    if (named.empty()) term.fields = knownFields();
    if (isNumber(text)) term.number = searchedDigits(text);
    if (coreOf(term.number).size() < kLeastDigits) term.number.clear();
    terms_.push_back(std::move(term));
  }
}

bool SearchQuery::occurs(const Term& term, std::string_view text) {
  // Most of those that an index may hold are told from the others at once.
  const bool holdsText = !term.text.empty() && isWithin(term.text, text);
  const bool holdsNumber = !term.number.empty() && isWithin(coreOf(term.number), text);
  if (!holdsText && !holdsNumber) return false;
  while (!text.empty()) {
    const auto end = std::min(text.find('\n'), text.size() - 1);
    const auto line = text.substr(1, end - 1);
    const auto field = static_cast<SearchField>(text[0]);
    text.remove_prefix(end + 1);
    if (std::ranges::find(term.fields, field) == term.fields.end()) continue;
    if (holdsText && isWithin(term.text, line)) return true;
    if (holdsNumber && field == SearchField::Phone && isOfNumber(term.number, line)) {
      return true;
    }
  }
  return false;
}

bool SearchQuery::matches(std::string_view text) const {
  return !empty() &&
         std::ranges::all_of(terms_, [&](const Term& term) { return occurs(term, text); });
}

std::vector<std::vector<SearchQuery::Grams>> SearchQuery::grams() const {
  std::vector<std::vector<Grams>> all;
  for (const auto& term : terms_) {
    std::vector<Grams> either;
    if (!term.text.empty()) either.push_back(gramsOf(term.text));
    if (!term.number.empty()) either.push_back(gramsOf(coreOf(term.number)));
    all.push_back(std::move(either));
  }
  return all;
}

}  // namespace ox
