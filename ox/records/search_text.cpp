#include "ox/records/search_text.hpp"

#include <algorithm>
#include <array>

#include "ox/base/text/case.hpp"
#include "ox/base/text/digits.hpp"
#include "ox/base/text/joined.hpp"
#include "ox/base/text/script.hpp"
#include "ox/base/text/search_forms.hpp"
#include "ox/records/property_keys.hpp"

namespace ox {
namespace {

std::string withoutBlanks(std::string text) {
  std::erase(text, ' ');
  return text;
}

class Lines {
 public:
  // The forms of a text in other letters are for what people know of a person by heart.
  enum class Forms : std::uint8_t { Folded, All };

  void add(SearchField field, std::string_view text, Forms forms) {
    if (text.empty()) return;
    if (forms == Forms::Folded) return addFolded(field, foldedForSearch(text));
    const auto typed = searchForms(text);
    for (const auto& form : typed) {
      addFolded(field, form);
      // Syllables that stand for one word are typed as one.
      if (&form != &typed.front()) addFolded(field, withoutBlanks(form));
    }
  }

  void addFolded(SearchField field, std::string_view text) {
    if (text.empty()) return;
    lines_ += static_cast<char>(field);
    for (const char c : text) lines_ += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
    lines_ += '\n';
  }

  std::string take() { return std::move(lines_); }

 private:
  std::string lines_;
};

std::string_view textOf(const PropertyBag& properties, PropertyId id) {
  const auto* text = properties.text(id);
  return text == nullptr ? std::string_view() : std::string_view(*text);
}

// The first letter of each word, as names are typed too.
std::string initialsOf(std::string_view name) {
  std::string initials;
  bool begins = true;
  for (std::size_t at = 0; at < name.size();) {
    const auto from = at;
    search_detail::nextCharacter(name, at);
    const auto character = name.substr(from, at - from);
    if (begins && character != " ") initials += character;
    begins = character == " ";
  }
  return initials;
}

void addName(const PropertyBag& properties, Lines& lines) {
  const auto first = textOf(properties, property_id::kFirst);
  const auto middle = textOf(properties, property_id::kMiddle);
  const auto last = textOf(properties, property_id::kLast);
  const auto name = joined({first, middle, last}, " ");
  const auto isEastAsian = [](std::string_view part) {
    return part.empty() || isHanKanaHangul(part);
  };
  const bool familyFirst =
      !name.empty() && isEastAsian(first) && isEastAsian(middle) && isEastAsian(last);
  const bool isNamed = properties.find(property_id::kFirst) != nullptr ||
                       properties.find(property_id::kMiddle) != nullptr ||
                       properties.find(property_id::kLast) != nullptr;
  // Whoever has no name is called by the company.
  const auto shown = !isNamed      ? std::string(textOf(properties, property_id::kOrganization))
                     : familyFirst ? joined({last, middle, first}, "")
                                   : name;
  for (const auto& form : searchForms(shown)) {
    lines.addFolded(SearchField::Name, form);
    if (form.find(' ') == std::string::npos) continue;
    lines.addFolded(SearchField::Name, withoutBlanks(form));
    lines.addFolded(SearchField::Name, initialsOf(form));
  }
  const auto more =
      joined({textOf(properties, property_id::kTitle), textOf(properties, property_id::kSuffix),
              textOf(properties, property_id::kMaidenName)},
             " ");
  lines.add(SearchField::Name, more, Lines::Forms::All);
  lines.add(SearchField::Phonetic,
            joined({textOf(properties, property_id::kFirstPhonetic),
                    textOf(properties, property_id::kMiddlePhonetic),
                    textOf(properties, property_id::kLastPhonetic)},
                   " "),
            Lines::Forms::All);
}

// Every text within the object.
void addTexts(SearchField field, const Object& object, Lines& lines) {
  if (const auto* dictionary = object.dictionary()) {
    for (const auto& [key, value] : dictionary->entries()) addTexts(field, value, lines);
  } else if (const auto* array = object.array()) {
    for (const auto& element : *array) addTexts(field, element, lines);
  } else if (const auto* text = object.text()) {
    lines.add(field, *text, Lines::Forms::Folded);
  } else if (const auto* date = object.as<Date>()) {
    lines.add(field, date->toText(), Lines::Forms::Folded);
  }
}

SearchField fieldOfAddressPart(std::string_view key) {
  if (key == kABAddressCityKey) return SearchField::Town;
  if (key == kABAddressStateKey) return SearchField::State;
  if (key == kABAddressZIPKey) return SearchField::Zip;
  if (key == kABAddressCountryKey || key == kABAddressCountryCodeKey) return SearchField::Country;
  return SearchField::Street;
}

void addAddress(const Object& address, Lines& lines) {
  const auto* dictionary = address.dictionary();
  if (dictionary == nullptr) return;
  for (const auto& [key, value] : dictionary->entries()) {
    const auto* text = value.text();
    if (text == nullptr) continue;
    const auto field = fieldOfAddressPart(key);
    lines.add(field, *text, field == SearchField::Town ? Lines::Forms::All : Lines::Forms::Folded);
  }
}

void addElement(PropertyId id, const Object& value, Lines& lines) {
  switch (id) {
    case property_id::kPhone:
      if (const auto* number = value.text()) {
        lines.addFolded(SearchField::Phone, searchedDigits(*number));
      }
      return;
    case property_id::kAddress:
      return addAddress(value, lines);
    case property_id::kEmail:
      return addTexts(SearchField::Email, value, lines);
    case property_id::kURLs:
      return addTexts(SearchField::Url, value, lines);
    case property_id::kInstantMessage:
      return addTexts(SearchField::Chat, value, lines);
    case property_id::kSocialProfile:
      return addTexts(SearchField::Profile, value, lines);
    case property_id::kRelatedNames:
      return addTexts(SearchField::Related, value, lines);
    case property_id::kOtherDates:
    case property_id::kBirthday:
      return addTexts(SearchField::Date, value, lines);
    case property_id::kNickname:
    case property_id::kOrganization:
      if (const auto* text = value.text()) {
        lines.add(id == property_id::kNickname ? SearchField::Nickname : SearchField::Company,
                  *text, Lines::Forms::All);
      }
      return;
    case property_id::kNote:
      return addTexts(SearchField::Note, value, lines);
    case property_id::kDepartment:
      return addTexts(SearchField::Department, value, lines);
    case property_id::kJobTitle:
      return addTexts(SearchField::Job, value, lines);
    default:
      if (id >= kFirstCustomProperty) addTexts(SearchField::Other, value, lines);
  }
}

struct NamedField {
  std::string_view word;
  std::array<SearchField, 5> fields;
  std::size_t count;
};
constexpr NamedField named(std::string_view word, SearchField field) {
  return {word, {field}, 1};
}
constexpr std::array kNamedFields = {
    NamedField{"name", {SearchField::Name, SearchField::Nickname, SearchField::Phonetic}, 3},
    named("nickname", SearchField::Nickname),
    named("phonetic", SearchField::Phonetic),
    named("company", SearchField::Company),
    named("email", SearchField::Email),
    named("mail", SearchField::Email),
    named("town", SearchField::Town),
    named("city", SearchField::Town),
    named("note", SearchField::Note),
    named("phone", SearchField::Phone),
    named("department", SearchField::Department),
    named("job", SearchField::Job),
    named("jobtitle", SearchField::Job),
    NamedField{"address",
               {SearchField::Street, SearchField::Town, SearchField::State, SearchField::Zip,
                SearchField::Country},
               5},
    named("street", SearchField::Street),
    named("state", SearchField::State),
    named("zip", SearchField::Zip),
    named("country", SearchField::Country),
    named("url", SearchField::Url),
    named("urls", SearchField::Url),
    named("chat", SearchField::Chat),
    named("instantmessage", SearchField::Chat),
    named("profile", SearchField::Profile),
    named("socialprofile", SearchField::Profile),
    named("related", SearchField::Related),
    named("relatednames", SearchField::Related),
    named("date", SearchField::Date),
    named("birthday", SearchField::Date),
    named("other", SearchField::Other),
};

}  // namespace

std::string searchText(const PropertyBag& properties) {
  Lines lines;
  addName(properties, lines);
  for (const auto& [id, value] : properties.entries()) {
    if (const auto* list = std::get_if<MultiValuePtr>(&value)) {
      if (*list == nullptr) continue;
      for (const auto& entry : (*list)->entries) addElement(id, entry.value, lines);
    } else {
      addElement(id, std::get<Object>(value), lines);
    }
  }
  return lines.take();
}

std::string searchedDigits(std::string_view number) {
  const auto first = number.find_first_not_of(" \t(");
  const bool hasPlus = first != std::string_view::npos && number.substr(first).starts_with('+');
  std::string written(number);
  // The zero that is dialled within the country alone.
  const auto zero = written.find("(0)");
  if (zero != std::string::npos && zero > 0) written.erase(zero, 3);
  auto digits = decimalDigits(written);
  if (hasPlus && !digits.empty()) return "+" + digits;
  if (digits.starts_with("00")) return "+" + digits.substr(2);
  return zero == std::string::npos ? digits : decimalDigits(number);
}

std::span<const SearchField> fieldsNamed(std::string_view word) {
  const auto* found = std::ranges::find(kNamedFields, word, &NamedField::word);
  if (found == kNamedFields.end()) return {};
  return std::span(found->fields).first(found->count);
}

}  // namespace ox
