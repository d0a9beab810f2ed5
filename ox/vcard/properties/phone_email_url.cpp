#include "ox/base/text.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/properties/each_property.hpp"

// TEL, EMAIL and URL: a text, of which the scheme goes that a URI has in front of it.

namespace ox::vcard {
namespace {

constexpr std::string_view kPhoneScheme = "TEL:";
constexpr std::string_view kEmailScheme = "MAILTO:";

std::string_view withoutScheme(std::string_view text, std::string_view scheme) {
  text = trimmed(text);
  if (!scheme.empty() && startsWithWord(text, scheme)) text.remove_prefix(scheme.size());
  return text;
}

bool readWithoutScheme(const PropertyRow& row, const ContentLine& line, std::string_view scheme,
                       CardDraft& draft) {
  Object value = draft.text(line);
  const auto& whole = *value.text();
  const auto bare = withoutScheme(whole, scheme);
  if (bare.empty()) return true;
  if (bare.size() != whole.size()) value = std::string(bare);
  draft.addEntry(row.property, std::move(value), line, {});
  return true;
}

// A value that is all scheme and blanks has no line.
bool isWritable(const CardText& text, std::string_view scheme) {
  return !withoutScheme(text.view(), scheme).empty();
}

bool isExact(const CardText& text, std::string_view scheme) {
  return !text.isChanged() && withoutScheme(text.view(), scheme).size() == text.view().size();
}

bool writeText(EntryWriter& entry, std::string_view name, std::string_view scheme) {
  const auto* value = entry.value().text();
  if (value == nullptr) return false;
  const CardText text(*value);
  if (!isWritable(text, scheme)) return false;
  entry.start(name);
  entry.line().raw(":").text(text.view());
  entry.end();
  return isExact(text, scheme);
}

}  // namespace

bool readPhone(const PropertyRow& row, const ContentLine& line, CardDraft& draft) {
  return readWithoutScheme(row, line, kPhoneScheme, draft);
}

bool readEmail(const PropertyRow& row, const ContentLine& line, CardDraft& draft) {
  return readWithoutScheme(row, line, kEmailScheme, draft);
}

bool readUrl(const PropertyRow& row, const ContentLine& line, CardDraft& draft) {
  return readWithoutScheme(row, line, {}, draft);
}

bool writePhone(EntryWriter& entry) {
  return writeText(entry, "TEL", kPhoneScheme);
}

bool writeEmail(EntryWriter& entry) {
  return writeText(entry, "EMAIL", kEmailScheme);
}

bool writeUrl(EntryWriter& entry) {
  const auto* value = entry.value().text();
  if (value == nullptr) return false;
  const CardText text(*value);
  if (!isWritable(text, {})) return false;
  entry.start("URL");
  entry.line().raw(":").uri(text.view());
  entry.end();
  return isExact(text, {});
}

}  // namespace ox::vcard
