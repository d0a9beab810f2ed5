#include "card_text.hpp"

#include <gtest/gtest.h>

namespace ox::vcard {
namespace {

std::string shown(const Object& object) {
  if (const auto* text = object.text()) return *text;
  if (const auto* date = object.as<Date>()) return date->toText();
  std::string out = "{";
  if (const auto* dictionary = object.dictionary()) {
    for (const auto& [key, value] : dictionary->entries()) {
      if (out.size() > 1) out += ',';
      out += key + "=" + shown(value);
    }
  }
  return out + "}";
}

void addProperty(PropertyId id, const PropertyValue& value, std::string& out) {
  if (id == property_id::kUnmodelledLines) {
    for (const auto& line : *std::get<Object>(value).array()) out += "kept=" + *line.text() + "\n";
    return;
  }
  const auto name = id == property_id::kCardUid ? "UID" : property_table::nameOf(id);
  if (const auto* single = std::get_if<Object>(&value)) {
    out += name + "=" + shown(*single) + "\n";
    return;
  }
  const auto& multi = *std::get<MultiValuePtr>(value);
  for (const auto& entry : multi.entries) {
    out += name + (entry.identifier == multi.primary ? "*" : "");
    out += "[" + entry.label.value_or("-") + "]=" + shown(entry.value) + "\n";
  }
}

}  // namespace

std::vector<Reader::Result> readAll(std::string_view bytes) {
  MemorySource source(bytes);
  Reader reader(source);
  std::vector<Reader::Result> results;
  while (auto result = reader.next()) results.push_back(std::move(*result));
  return results;
}

std::string textOf(const Reader::Result& result) {
  if (const auto* refusal = std::get_if<Refusal>(&result)) {
    return "refused " + std::to_string(refusal->line) + ": " + refusal->reason + "\n";
  }
  const auto& card = std::get<Card>(result);
  std::string out = card.isGroup ? "group\n" : "";
  for (const auto& [id, value] : card.properties.entries()) addProperty(id, value, out);
  if (card.photo) out += "photo=" + std::to_string(card.photo->size()) + " bytes\n";
  for (const auto& member : card.members) out += "member=" + member + "\n";
  for (const auto& repair : card.repairs) {
    out += "repair " + std::to_string(repair.line) + ": " + repair.reason + "\n";
  }
  return out;
}

std::string textOfAll(std::string_view bytes) {
  std::string out;
  for (const auto& result : readAll(bytes)) {
    if (!out.empty()) out += "--\n";
    out += textOf(result);
  }
  return out;
}

std::string textOfCard(std::string_view version, std::string_view lines) {
  std::string card = "BEGIN:VCARD\nVERSION:";
  card.append(version).append("\n").append(lines).append("END:VCARD\n");
  return textOfAll(card);
}

void expectRows(const std::vector<CardRow>& rows) {
  for (const auto& row : rows) {
    EXPECT_EQ(textOfCard(row.version, row.lines), row.expected) << row.version << "\n" << row.lines;
  }
}

}  // namespace ox::vcard
