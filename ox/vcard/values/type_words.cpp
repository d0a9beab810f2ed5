#include "ox/vcard/values/type_words.hpp"

#include <algorithm>
#include <array>
#include <charconv>

#include "ox/records/property_keys.hpp"
#include "ox/vcard/lines/ascii.hpp"

namespace ox::vcard {
namespace {

using namespace type_word;

// No constant names this label; hosts compare it as it stands here.
constexpr std::string_view kOtherFaxLabel = "_$!<OtherFAX>!$_";

struct WordRow {
  std::string_view word;
  std::uint32_t bit;
};

constexpr std::array kWords = {
    WordRow{"HOME", kHome},     WordRow{"WORK", kWork},         WordRow{"CELL", kCell},
    WordRow{"VOICE", kVoice},   WordRow{"INTERNET", kInternet}, WordRow{"FAX", kFax},
    WordRow{"OTHER", kOther},   WordRow{"MAIN", kMain},         WordRow{"PAGER", kPager},
    WordRow{"IPHONE", kIPhone}, WordRow{"MOBILE", kMobile},
};

struct LabelRow {
  std::uint32_t needed;
  std::string_view label;
  std::uint32_t used;
};

// The first row whose words are all there wins. A fax of no known place is an "other" one.
constexpr std::array kPhoneLabels = {
    LabelRow{kFax | kHome, kABPhoneHomeFAXLabel, kFax | kHome},
    LabelRow{kFax | kWork, kABPhoneWorkFAXLabel, kFax | kWork},
    LabelRow{kFax, kOtherFaxLabel, kFax | kOther},
    LabelRow{kPager, kABPhonePagerLabel, kPager},
    LabelRow{kIPhone, kABPhoneiPhoneLabel, kIPhone | kCell | kMobile},
    LabelRow{kMain, kABPhoneMainLabel, kMain},
    LabelRow{kCell, kABPhoneMobileLabel, kCell | kMobile},
};

constexpr std::array kPlaceLabels = {
    LabelRow{kHome, kABHomeLabel, kHome},
    LabelRow{kWork, kABWorkLabel, kWork},
    LabelRow{kOther, kABOtherLabel, kOther},
};

struct ParametersRow {
  std::string_view label;
  std::string_view upperCase;
  std::string_view lowerCase;
  std::uint32_t words;
  bool ofPhonesOnly = true;
};

constexpr std::array kLabelParameters = {
    ParametersRow{kABHomeLabel, ";TYPE=HOME", ";TYPE=home", kHome, false},
    ParametersRow{kABWorkLabel, ";TYPE=WORK", ";TYPE=work", kWork, false},
    ParametersRow{kABOtherLabel, ";TYPE=OTHER", "", kOther, false},
    ParametersRow{kABPhoneMobileLabel, ";TYPE=CELL", ";TYPE=cell", kCell},
    ParametersRow{kABPhoneiPhoneLabel, ";TYPE=IPHONE;TYPE=CELL", "", kIPhone | kCell},
    ParametersRow{kABPhoneMainLabel, ";TYPE=MAIN", "", kMain},
    ParametersRow{kABPhoneHomeFAXLabel, ";TYPE=HOME;TYPE=FAX", ";TYPE=home;TYPE=fax", kHome | kFax},
    ParametersRow{kABPhoneWorkFAXLabel, ";TYPE=WORK;TYPE=FAX", ";TYPE=work;TYPE=fax", kWork | kFax},
    ParametersRow{kOtherFaxLabel, ";TYPE=FAX", ";TYPE=fax", kFax},
    ParametersRow{kABPhonePagerLabel, ";TYPE=PAGER", ";TYPE=pager", kPager},
};

void readWord(std::string_view word, TypeWords& words) {
  for (const auto& row : kWords) {
    if (!isWord(word, row.word)) continue;
    words.known |= row.bit;
    return;
  }
  if (isWord(word, "PREF")) {
    if (words.rank == 0) words.rank = 1;
    return;
  }
  words.unknown.push_back(word);
}

// RFC 6350, section 5.3: 1 to 100, 1 is the most preferred.
unsigned readRank(std::string_view text) {
  unsigned rank = 0;
  std::from_chars(text.data(), text.data() + text.size(), rank);
  return rank >= 1 && rank <= 100 ? rank : 1;
}

template <typename Rows>
TypeLabel firstLabel(const Rows& rows, std::uint32_t known) {
  const auto all = (known & kMobile) != 0 ? known | kCell : known;
  for (const auto& row : rows) {
    if ((all & row.needed) == row.needed) return {row.label, row.used & known};
  }
  return {};
}

}  // namespace

void readTypeWords(const ContentLine& line, TypeWords& words) {
  words.known = 0;
  words.rank = 0;
  words.unknown.clear();
  for (const auto& parameter : line.parameters) {
    if (parameter.kind == ParameterKind::Type) {
      forEachWord(parameter.value, [&](std::string_view word) { readWord(word, words); });
    } else if (parameter.kind == ParameterKind::Pref) {
      forEachWord(parameter.value, [&](std::string_view word) { words.rank = readRank(word); });
    }
  }
}

PreservedTypeWords::PreservedTypeWords(std::string_view parameters) {
  head_.append(1, 'X').append(parameters).append(1, ':');
  if (parseHead(head_, line_) != std::string_view::npos) readTypeWords(line_, words_);
}

std::uint32_t understoodWords(PropertyId property) {
  if (property == property_id::kPhone) return kVoice;
  return property == property_id::kEmail ? kInternet : 0;
}

TypeLabel typeLabel(PropertyId property, std::uint32_t known) {
  if (known == 0) return {};
  if (property == property_id::kPhone) {
    const auto label = firstLabel(kPhoneLabels, known);
    if (!label.label.empty()) return label;
  }
  return firstLabel(kPlaceLabels, known);
}

std::string_view extendedLabel(PropertyId property, const TypeWords& words) {
  constexpr std::array kProperties = {property_id::kPhone, property_id::kEmail, property_id::kURLs,
                                      property_id::kAddress, property_id::kInstantMessage};
  if (std::ranges::find(kProperties, property) == kProperties.end()) return {};
  for (const auto word : words.unknown) {
    // These name places in the window of a program.
    if (!startsWithWord(word, "X-") || startsWithWord(word, "X-EVOLUTION-")) continue;
    if (word.size() > 2 && word.find_first_of("()=") == std::string_view::npos) {
      return word.substr(2);
    }
  }
  return {};
}

LabelParameters labelParameters(PropertyId property, std::string_view label, bool lowerCase) {
  for (const auto& row : kLabelParameters) {
    if (row.label != label || (row.ofPhonesOnly && property != property_id::kPhone)) continue;
    const auto parameters = lowerCase ? row.lowerCase : row.upperCase;
    return {parameters, parameters.empty() ? 0 : row.words};
  }
  return {};
}

std::string_view typeWordText(std::uint32_t bit) {
  for (const auto& row : kWords) {
    if (row.bit == bit) return row.word;
  }
  return {};
}

}  // namespace ox::vcard
