#include "oxcontacts/output/shown_value.hpp"

#include "ox/OxAddressBookSDK/objects/OxObjectAddress.hpp"
#include "ox/OxAddressBookSDK/values/OxMutableMultipleValue.hpp"
#include "ox/platform/AddressBook/ABPerson.hpp"

namespace ox::program {
namespace {

bool isUpper(char c) {
  return c >= 'A' && c <= 'Z';
}

bool isLower(char c) {
  return c >= 'a' && c <= 'z';
}

Object withoutCountryCode(const OxObjectAddress& address) {
  auto copy = OxObjectAddress::init();
  for (const auto field : {OxAddressFieldCountryOrArea, OxAddressFieldState, OxAddressFieldCity,
                           OxAddressFieldStreet, OxAddressFieldZIP}) {
    copy->setStringValue_forFieldName(address.stringValueByFieldName(field), field);
  }
  return copy;
}

// The elements stand for the entries of the record, in their order.
void takeGuessedCountriesAway(const _ABPerson& person, const OxMutableMultipleValue& addresses) {
  const auto value = person.valueForProperty(kABAddressProperty);
  const auto* stored = std::get_if<MultiValuePtr>(&value);
  if (stored == nullptr || !*stored) return;
  const auto& entries = (*stored)->entries;
  for (std::size_t i = 0; i < entries.size() && i < addresses.count(); ++i) {
    const auto fields = entries[i].value.dictionary();
    if (!fields || fields->get(kABAddressCountryCodeKey).toText()) continue;
    const auto element = addresses.valueAtIndex(i);
    if (const auto address = element->value().host<OxObjectAddress>()) {
      element->setValue(withoutCountryCode(*address));
    }
  }
}

}  // namespace

OxValuePtr shownValue(const _ABPerson& person, const OxPropertyPtr& property) {
  auto value = person.valueByProperty(property);
  if (property->name() == OxProPertyAddress) {
    if (const auto addresses = multipleOf(value)) takeGuessedCountriesAway(person, *addresses);
  }
  return value;
}

std::string labelWords(std::string_view shownByModel) {
  constexpr std::string_view kFront = "_$!<";
  constexpr std::string_view kBack = ">!$_";
  const bool isKey = shownByModel.size() > kFront.size() + kBack.size() &&
                     shownByModel.starts_with(kFront) && shownByModel.ends_with(kBack);
  if (!isKey) return std::string(shownByModel);
  shownByModel.remove_prefix(kFront.size());
  shownByModel.remove_suffix(kBack.size());
  std::string words;
  for (std::size_t i = 0; i < shownByModel.size(); ++i) {
    const char letter = shownByModel[i];
    if (i > 0 && isUpper(letter) && isLower(shownByModel[i - 1])) words += ' ';
    words += letter;
  }
  return words;
}

}  // namespace ox::program
