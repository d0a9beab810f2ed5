#include "ox/vcard/properties/formatted_name.hpp"

#include <string>
#include <utility>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/decode.hpp"
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

// What a preserved FN line says: a text that may be written, empty when there is none.
struct FormattedName {
  std::string text;
  bool isDerived = false;
};

FormattedName nameOfLine(std::string_view preserved) {
  FormattedName name;
  ContentLine line;
  const auto colon = parseHead(preserved, line);
  if (colon == std::string_view::npos) return name;
  name.isDerived = isDerived(line);
  const auto text = unescaped(preserved.substr(colon + 1));
  const CardText clean(text);
  if (!trimmed(clean.view()).empty()) name.text = clean.view();
  return name;
}

// One that is made of something else than names has to say so, or a reader would take it for the
// name.
void writeText(std::string_view text, bool isMade, PropertyWriter& card) {
  card.line().raw("FN");
  if (isMade) card.line().raw(card.is30() ? ";X-DERIVED=TRUE" : ";DERIVED=TRUE");
  card.line().raw(":").text(text).end();
}

void writeComposed(std::string_view composed, std::string_view company, PropertyWriter& card) {
  if (!composed.empty() || !company.empty()) {
    writeText(composed.empty() ? company : composed, false, card);
  } else {
    writeText(nameInstead(card), true, card);
  }
}

// The line that counts, as it is; where the version does not admit that, what it says.
void writePreserved(std::string_view line, const FormattedName& name, PropertyWriter& card) {
  std::string room;
  if (const auto admitted = UnmodelledLine(line).inVersion(card.version(), room)) {
    card.line().raw(*admitted).end();
  } else {
    writeText(name.text, name.isDerived, card);
    card.noteFormattedNameUnsaid();
  }
}

}  // namespace

// Of several lines the first counts that is called something, and before it one that is not made of
// other lines. What is only blanks calls nobody anything.
bool readFormattedName(const PropertyRow& /*row*/, const ContentLine& line, CardDraft& draft) {
  auto text = draft.text(line);
  if (trimmed(CardText(text).view()).empty()) return true;
  auto& name = draft.name;
  const bool isMade = isDerived(line);
  if (!name.formatted.empty() && (!name.isDerived || isMade)) {
    name.isRepeated = true;
    return false;
  }
  name.formatted = std::move(text);
  name.isDerived = isMade;
  name.formattedLine.clear();
  // A name is text: what claims to be base64 was read as it stands.
  if (line.encoding == Encoding::Base64) {
    appendPreservedAsRead(line, name.formattedLine);
  } else {
    appendPreserved(line, draft.facts.dialect, name.formattedLine);
  }
  if (draft.facts.isGroup && !name.isDerived) {
    draft.preserveParameters(property_id::kGroupName, line);
  }
  return true;
}

// FN is never missing. What a record without a name is called, but the company is not, was the
// company's former name, and would be read as hers.
void writeFormattedName(const NameParts& parts, PropertyWriter& card) {
  std::string composed;
  composeFullName(parts, composed);
  const auto company = trimmed(card.textOf(property_id::kOrganization));
  const auto line = card.unmodelled().formattedNameLine();
  if (!card.isNameChanged() && !line.empty()) {
    const auto name = nameOfLine(line);
    const bool isHers = name.isDerived || !composed.empty() || trimmed(name.text) == company;
    if (isHers && !name.text.empty()) return writePreserved(line, name, card);
    card.noteNameChanged();
  }
  writeComposed(composed, company, card);
}

}  // namespace ox::vcard
