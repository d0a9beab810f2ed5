#include "ox/transfer/person_card.hpp"

#include <stdexcept>
#include <utility>

#include "ox/records/card_uid.hpp"
#include "ox/records/clean_text.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/records/property_codec.hpp"
#include "ox/vcard/properties/categories.hpp"

namespace ox::vcard {

PersonCard personCard(Card&& card, CategoriesAs categoriesAs) {
  cleanText(card.properties);
  if (categoriesAs == CategoriesAs::Tags) noteCategoriesAreTags(card.properties);
  if (const auto misfit = misfitOf(card.properties); !misfit.empty()) {
    throw std::runtime_error(misfit);
  }
  PersonCard person;
  person.categories = categoriesOf(card.properties);
  person.values = encodedValues(card.properties);
  person.fingerprint = contentFingerprint(card.properties, card.photo);
  if (person.values.cardUid) person.uid = uidKey(*person.values.cardUid);
  person.photo = std::move(card.photo);
  person.repairs = std::move(card.repairs);
  person.charset = std::move(card.charset);
  person.line = card.line;
  return person;
}

Card cardOf(const PersonCard& person) {
  Card card;
  card.properties = decodeProperties(person.values.bytes);
  card.photo = person.photo;
  card.charset = person.charset;
  card.line = person.line;
  return card;
}

}  // namespace ox::vcard
