#include "ox/vcard/properties/formatted_name.hpp"

#include <string>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/properties/each_property.hpp"
#include "ox/vcard/unmodelled/line_form.hpp"
#include "ox/vcard/unmodelled/unmodelled_line.hpp"

namespace ox::vcard {
namespace {

// RFC 9554, section 4.4: what the line says is made of other lines. vCard 3.0 has no such
// parameter.
bool isDerived(const ContentLine& line) {
  for (const auto& parameter : line.parameters) {
    const bool named = isWord(parameter.name, "DERIVED") || isWord(parameter.name, "X-DERIVED");
    if (named && isWord(parameter.value, "TRUE")) return true;
  }
  return false;
}

// What FN says of a person without a name: never nothing.
std::string nameInstead(PropertyWriter& card) {
  const auto nickname = card.textOf(property_id::kNickname);
  if (!nickname.empty()) return std::string(nickname);
  for (const auto id : {property_id::kEmail, property_id::kPhone}) {
    const auto* value = card.valueOf(id);
    const auto* values = value != nullptr ? std::get_if<MultiValuePtr>(value) : nullptr;
    if (values == nullptr || (*values)->entries.empty()) continue;
    const auto* text = (*values)->entries.front().value.text();
    if (text == nullptr) continue;
    const CardText clean(*text);
    if (!trimmed(clean.view()).empty()) return std::string(clean.view());
  }
  return "?";
}

}  // namespace

// What was made of other lines gives way to what somebody is called.
bool readFormattedName(const PropertyRow& /*row*/, const ContentLine& line, CardDraft& draft) {
  auto& name = draft.name;
  const bool isMade = isDerived(line);
  if (!name.formatted.empty() && (!name.isDerived || isMade)) {
    name.isRepeated = true;
    return false;
  }
  name.formatted = draft.text(line);
  name.isDerived = isMade;
  name.formattedLine.clear();
  appendPreserved(line, name.formattedLine);
  if (draft.facts.isGroup && !name.isDerived && !name.formatted.empty()) {
    draft.preserveParameters(property_id::kGroupName, line);
  }
  return true;
}

// Never missing. One that is made of something else than names has to say so, or a reader would
// take it for the name.
void writeFormattedName(const NameParts& parts, PropertyWriter& card) {
  const auto line =
      card.isNameChanged() ? std::string_view() : card.unmodelled().formattedNameLine();
  std::string room;
  if (!line.empty()) {
    if (const auto admitted = UnmodelledLine(line).inVersion(card.version(), room)) {
      card.line().raw(*admitted).end();
      return;
    }
  }
  std::string composed;
  composeFullName(parts, composed);
  const auto company = card.textOf(property_id::kOrganization);
  if (!composed.empty() || !company.empty()) {
    card.line().raw("FN:").text(composed.empty() ? company : composed).end();
  } else {
    card.line().raw(card.is30() ? "FN;X-DERIVED=TRUE:" : "FN;DERIVED=TRUE:");
    card.line().text(nameInstead(card)).end();
  }
  if (!line.empty()) card.noteFormattedNameUnsaid();
}

}  // namespace ox::vcard
