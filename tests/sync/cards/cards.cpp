#include "cards.hpp"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <utility>

namespace ox::sync {

std::string cardText(std::string_view lines, std::string_view version) {
  std::string text = "BEGIN:VCARD\nVERSION:";
  text.append(version).append("\n").append(lines).append("END:VCARD\n");
  return withCrlf(text);
}

CardContent contentOf(std::string_view text) {
  const auto read = readCard(text);
  if (const auto* reason = std::get_if<std::string>(&read)) {
    ADD_FAILURE() << *reason << "\n" << text;
    return {};
  }
  return std::get<ReadCard>(read).content;
}

MultiEntry& entryOf(MultiValue& values, std::string_view value) {
  const auto found =
      std::find_if(values.entries.begin(), values.entries.end(), [&](const MultiEntry& entry) {
        return entry.value.text() != nullptr && *entry.value.text() == value;
      });
  if (found != values.entries.end()) return *found;
  ADD_FAILURE() << "no entry " << value;
  static MultiEntry none;
  return none;
}

void setText(CardContent& content, PropertyId property, std::string_view value) {
  content.properties.set(property, value.empty() ? Object() : Object(value));
}

MultiValue listOf(const CardContent& content, PropertyId property) {
  const auto* held = std::get_if<MultiValuePtr>(&content.properties.value(property));
  return held != nullptr && *held ? **held : MultiValue();
}

void setList(CardContent& content, PropertyId property, MultiValue values) {
  if (values.entries.empty()) {
    content.properties.set(property, PropertyValue());
  } else {
    content.properties.set(property, std::make_shared<const MultiValue>(std::move(values)));
  }
}

void changeEntry(CardContent& content, PropertyId property, std::string_view value,
                 std::string_view now) {
  auto values = listOf(content, property);
  entryOf(values, value).value = Object(now);
  setList(content, property, std::move(values));
}

void addEntry(CardContent& content, PropertyId property, std::string_view value, Text label) {
  auto values = listOf(content, property);
  values.add(Object(value), std::move(label));
  setList(content, property, std::move(values));
}

void removeEntry(CardContent& content, PropertyId property, std::string_view value) {
  auto values = listOf(content, property);
  const auto identifier = entryOf(values, value).identifier;
  std::erase_if(values.entries, [&](const auto& each) { return each.identifier == identifier; });
  if (values.primary == identifier) values.primary = 0;
  setList(content, property, std::move(values));
}

std::vector<std::string> textsOf(const CardContent& content, PropertyId property) {
  std::vector<std::string> texts;
  const auto values = listOf(content, property);
  for (const auto& entry : values.entries) {
    std::string text = entry.identifier == values.primary ? "*" : "";
    text += entry.label.value_or("-");
    text += '=';
    text += entry.value.text() != nullptr ? *entry.value.text() : "?";
    texts.push_back(std::move(text));
  }
  return texts;
}

}  // namespace ox::sync
