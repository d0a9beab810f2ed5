#include "ox/vcard/unmodelled/value_form.hpp"

#include <array>
#include <cstdint>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/line_writer.hpp"
#include "ox/vcard/lines/name_table.hpp"
#include "ox/vcard/lines/structured_value.hpp"
#include "ox/vcard/lines/uri.hpp"

namespace ox::vcard {
namespace {

enum class ValueForm : std::uint8_t {
  AsItStands,
  Text,
  TextList,    // commas part it
  Units,       // semicolons part it
  Components,  // semicolons part it, and commas each component
  Unknown21,   // of a property that nobody knows, in vCard 2.1
};

struct FormRow {
  std::string_view name;
  ValueForm form;
};

constexpr std::array kForms = {
    FormRow{"FN", ValueForm::Text},
    FormRow{"TITLE", ValueForm::Text},
    FormRow{"ROLE", ValueForm::Text},
    FormRow{"NOTE", ValueForm::Text},
    FormRow{"LABEL", ValueForm::Text},
    FormRow{"MAILER", ValueForm::Text},
    FormRow{"NAME", ValueForm::Text},
    FormRow{"SORT-STRING", ValueForm::Text},
    FormRow{"CLASS", ValueForm::Text},
    FormRow{"PRODID", ValueForm::Text},
    FormRow{"BIRTHPLACE", ValueForm::Text},
    FormRow{"DEATHPLACE", ValueForm::Text},
    FormRow{"EXPERTISE", ValueForm::Text},
    FormRow{"HOBBY", ValueForm::Text},
    FormRow{"INTEREST", ValueForm::Text},
    FormRow{"PRONOUNS", ValueForm::Text},
    FormRow{"X-MAIDENNAME", ValueForm::Text},
    FormRow{"X-PHONETIC-FIRST-NAME", ValueForm::Text},
    FormRow{"X-PHONETIC-MIDDLE-NAME", ValueForm::Text},
    FormRow{"X-PHONETIC-LAST-NAME", ValueForm::Text},
    FormRow{"X-ABLABEL", ValueForm::Text},
    FormRow{"NICKNAME", ValueForm::TextList},
    FormRow{"CATEGORIES", ValueForm::TextList},
    FormRow{"ORG", ValueForm::Units},
    FormRow{"N", ValueForm::Components},
    // What is neither text nor made of texts, whatever the version.
    FormRow{"AGENT", ValueForm::AsItStands},
    FormRow{"BDAY", ValueForm::AsItStands},
    FormRow{"GEO", ValueForm::AsItStands},
    FormRow{"KEY", ValueForm::AsItStands},
    FormRow{"LOGO", ValueForm::AsItStands},
    FormRow{"PHOTO", ValueForm::AsItStands},
    FormRow{"RELATED", ValueForm::AsItStands},
    FormRow{"REV", ValueForm::AsItStands},
    FormRow{"SOUND", ValueForm::AsItStands},
    FormRow{"TZ", ValueForm::AsItStands},
    FormRow{"UID", ValueForm::AsItStands},
    FormRow{"X-OX-PROPERTY", ValueForm::AsItStands},
    FormRow{"X-OX-LINE", ValueForm::AsItStands},
};

constexpr NameTable kTable(kForms);

ValueForm formOf(const ContentLine& line, Dialect dialect) {
  // What may not stand in a card is looked at later.
  if (line.encoding == Encoding::Base64 || CardText(line.value).isChanged()) {
    return ValueForm::AsItStands;
  }
  const auto* type = line.find(ParameterKind::Value);
  if (type != nullptr && !isWord(type->value, "TEXT")) return ValueForm::AsItStands;
  if (const auto* row = kTable.find(line.name)) {
    // vCard 2.1 knows no lists but in CATEGORIES, where programs write them.
    const bool isListOf21 = dialect == Dialect::V21 && row->form == ValueForm::TextList;
    return isListOf21 && !isWord(line.name, "CATEGORIES") ? ValueForm::Text : row->form;
  }
  const bool isText = dialect == Dialect::V21 && !isUri(trimmed(line.value));
  return isText ? ValueForm::Unknown21 : ValueForm::AsItStands;
}

}  // namespace

std::string canonicalValue(const ContentLine& line, Dialect dialect) {
  switch (formOf(line, dialect)) {
    case ValueForm::Text:
      return canonicalText(line.value);
    case ValueForm::TextList:
      return canonicalPieces(line.value, ',');
    case ValueForm::Units:
      return canonicalPieces(line.value, ';');
    case ValueForm::Components:
      return canonicalComponents(line.value, dialect);
    case ValueForm::Unknown21:
      return canonicalUnknown21(line.value);
    case ValueForm::AsItStands:
      break;
  }
  return std::string(line.value);
}

}  // namespace ox::vcard
