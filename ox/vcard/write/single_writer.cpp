#include <array>

#include "ox/base/base64.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/decode.hpp"
#include "ox/vcard/properties/card_date.hpp"
#include "ox/vcard/properties/picture_kind.hpp"
#include "ox/vcard/properties/spelling.hpp"
#include "ox/vcard/write/card_writer.hpp"

// The lines of what a record holds once.

namespace ox::vcard {

std::string_view CardWriter::textOf(PropertyId property) {
  const auto* value = values_[property];
  if (value == nullptr) return {};
  const auto* single = std::get_if<Object>(value);
  const auto* text = single != nullptr ? single->text() : nullptr;
  if (text == nullptr || text->empty()) {
    notExact(property);
    return {};
  }
  const CardText clean(*text);
  if (!clean.isChanged()) return *text;
  notExact(property);
  return cleaned_.try_emplace(property, clean.view()).first->second;
}

void CardWriter::ownParameters(PropertyId property) {
  for (const auto& kept : kept_.parametersOf(property, 0)) {
    if (areAdmitted(kept.said, options_.version)) line_.raw(kept.said);
  }
  const auto rank = kept_.rankOf(property, 0);
  if (rank <= 1 || !is30()) {
    preference(rank);
  } else {
    wrapDetail(property, 0, ";PREF=", std::to_string(rank));
  }
}

void CardWriter::names() {
  const NameParts parts{.last = textOf(property_id::kLast),
                        .first = textOf(property_id::kFirst),
                        .middle = textOf(property_id::kMiddle),
                        .title = textOf(property_id::kTitle),
                        .suffix = textOf(property_id::kSuffix)};
  const bool named = !parts.last.empty() || !parts.first.empty() || !parts.middle.empty() ||
                     !parts.title.empty() || !parts.suffix.empty();
  const auto spelling = kept_.spellingOf(property_id::kLast, 0);
  const bool isSpelt = !spelling.empty() && isNameSpelling(spelling, parts);
  nameChanged_ = !spelling.empty() && !isSpelt;
  if (named || is30()) {
    line_.raw("N");
    if (named) ownParameters(property_id::kLast);
    sortAs(named);
    line_.raw(":").raw(isSpelt ? spelling : nameSpelling(parts)).end();
  } else {
    sortAs(false);
  }
  fullName(parts);
}

// The parameter of N, as long as the readings are those that it gave. vCard 3.0 has none such.
void CardWriter::sortAs(bool named) {
  const auto kept = kept_.sortAs();
  if (kept.empty()) return;
  const SortedAs readings{std::string(textOf(property_id::kLastPhonetic)),
                          std::string(textOf(property_id::kFirstPhonetic))};
  if (keptSortedAs(kept) != readings) return;
  if (named && !is30() && areAdmitted(kept, options_.version)) {
    line_.raw(kept);
  } else {
    entryParameters_.push_back(KeptDetail{property_id::kLastPhonetic, 0, kept}.text());
  }
}

// Never missing. One that is made of something else than names has to say so, or a reader would
// take it for the name.
void CardWriter::fullName(const NameParts& parts) {
  const auto line = nameChanged_ ? std::string_view() : kept_.fullNameLine();
  if (!line.empty() && keptLine(KeptLine(line))) return;
  composeFullName(parts, scratch_);
  const auto company = textOf(property_id::kOrganization);
  if (!scratch_.empty() || !company.empty()) {
    line_.raw("FN:").text(scratch_.empty() ? company : scratch_).end();
  } else {
    line_.raw(is30() ? "FN;X-DERIVED=TRUE:" : "FN;DERIVED=TRUE:").text(nameInstead()).end();
  }
  if (!line.empty()) wrapped(line);
}

std::string_view CardWriter::nameInstead() {
  const auto nickname = textOf(property_id::kNickname);
  if (!nickname.empty()) return nickname;
  for (const auto id : {property_id::kEmail, property_id::kPhone}) {
    const auto* value = values_[id];
    const auto* values = value != nullptr ? std::get_if<MultiValuePtr>(value) : nullptr;
    if (values == nullptr || (*values)->entries.empty()) continue;
    const auto* text = (*values)->entries.front().value.text();
    if (text == nullptr) continue;
    scratch_ = CardText(*text).view();
    if (!trimmed(scratch_).empty()) return scratch_;
  }
  return "?";
}

void CardWriter::singleText(PropertyId property, std::string_view name) {
  const auto text = textOf(property);
  if (text.empty()) return;
  line_.raw(name);
  ownParameters(property);
  const auto spelling = kept_.spellingOf(property, 0);
  const bool isSpelt = !spelling.empty() && unescaped(spelling, Dialect::V30) == text;
  if (isSpelt) {
    line_.raw(":").raw(spelling).end();
  } else {
    line_.raw(":").text(text).end();
  }
}

void CardWriter::organization() {
  const auto company = textOf(property_id::kOrganization);
  const auto department = textOf(property_id::kDepartment);
  if (company.empty() && department.empty()) return;
  line_.raw("ORG");
  ownParameters(property_id::kOrganization);
  const auto spelling = kept_.spellingOf(property_id::kOrganization, 0);
  const auto isHeld = [&](const Organization& spelt) {
    return spelt.company == company && spelt.department == department;
  };
  const bool isSpelt = !spelling.empty() && isHeld(organizationOf(spelling, Dialect::V30));
  line_.raw(":").raw(isSpelt ? spelling : organizationSpelling(company, department)).end();
}

void CardWriter::birthday() {
  const auto* value = values_[property_id::kBirthday];
  if (value == nullptr) return;
  const auto* single = std::get_if<Object>(value);
  const auto* date = single != nullptr ? single->as<Date>() : nullptr;
  const auto spelling = date != nullptr ? spellCardDate(*date, !is30()) : std::nullopt;
  if (!spelling || !spelling->isExact) notExact(property_id::kBirthday);
  if (!spelling) return;
  line_.raw("BDAY").raw(spelling->omitsYear ? ";X-APPLE-OMIT-YEAR=1604" : "");
  ownParameters(property_id::kBirthday);
  line_.raw(":").raw(spelling->text).end();
}

void CardWriter::photo(const Data& bytes) {
  auto media = std::string(mediaTypeOf(*bytes));
  if (media.empty()) media = mediaType(kept_.spellingOf(kPhotoParameters, 0));
  line_.raw("PHOTO");
  if (is30()) {
    line_.raw(";ENCODING=b");
    if (const auto type = typeOfMedia(media); !type.empty()) line_.raw(";TYPE=").raw(type);
  }
  ownParameters(kPhotoParameters);
  if (!is30()) {
    line_.raw(":data:").raw(media.empty() ? "application/octet-stream" : media).raw(";base64,");
  }
  if (is30()) line_.raw(":");
  line_.raw(base64(*bytes)).end();
}

}  // namespace ox::vcard
