#include "ox/sync/cards/conflict_value.hpp"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "ox/records/property_codec.hpp"
#include "ox/sync/cards/card_merge.hpp"
#include "ox/sync/cards/parts/card_parts.hpp"
#include "ox/sync/cards/parts/property_words.hpp"
#include "ox/vcard/lines/content_line.hpp"

namespace ox::sync {
namespace {

std::string encodedBag(PropertyId property, PropertyValue value) {
  PropertyBag bag;
  bag.set(property, std::move(value));
  return encodeProperties(bag);
}

// What an encoded value is of.
struct Decoded {
  PropertyId property = 0;
  PropertyValue value;
};

Decoded decoded(const std::string& encoded) {
  if (encoded.empty()) return {};
  const auto bag = decodeProperties(encoded, 1);
  if (bag.entries().empty()) return {};
  return {bag.entries().front().first, bag.entries().front().second};
}

const MultiEntry* entryOf(const PropertyValue& value) {
  const auto* values = std::get_if<MultiValuePtr>(&value);
  return values != nullptr && *values && !(*values)->entries.empty() ? &(*values)->entries.front()
                                                                     : nullptr;
}

// With ours where theirs stands, under its identifier.
PropertyValue withEntry(const PropertyValue& held, const MultiEntry* theirs,
                        const MultiEntry* ours) {
  const auto* before = std::get_if<MultiValuePtr>(&held);
  auto values = before != nullptr && *before ? **before : MultiValue();
  const auto stands =
      std::find_if(values.entries.begin(), values.entries.end(), [&](const MultiEntry& entry) {
        return theirs != nullptr && entry.label == theirs->label && entry.value == theirs->value;
      });
  if (stands != values.entries.end()) {
    if (ours != nullptr) {
      stands->label = ours->label;
      stands->value = ours->value;
    } else {
      if (values.primary == stands->identifier) values.primary = 0;
      values.entries.erase(stands);
    }
  } else if (ours != nullptr) {
    values.add(ours->value, ours->label);
  }
  if (values.entries.empty()) return Object();
  return MultiValuePtr(std::make_shared<const MultiValue>(std::move(values)));
}

std::optional<std::string> lineOf(const PropertyValue& value) {
  PropertyBag bag;
  if (std::holds_alternative<Object>(value)) bag.set(property_id::kUnmodelledLines, value);
  auto texts = unmodelledTextsOf(bag);
  return texts.empty() ? std::nullopt : std::optional(std::move(texts.front()));
}

void putLine(CardContent& content, const Decoded& theirs, const Decoded& ours) {
  auto texts = unmodelledTextsOf(content.properties);
  const auto there = lineOf(theirs.value);
  const auto here = lineOf(ours.value);
  const auto stands = there ? std::find(texts.begin(), texts.end(), *there) : texts.end();
  if (stands != texts.end()) {
    if (here) {
      *stands = *here;
    } else {
      texts.erase(stands);
    }
  } else if (here) {
    texts.insert(texts.begin(), *here);
  }
  setUnmodelledTexts(content.properties, texts);
}

std::string textOfObject(const Object& value);

std::string joined(const std::vector<std::string>& texts) {
  std::string all;
  for (const auto& text : texts) {
    if (text.empty()) continue;
    if (!all.empty()) all += ", ";
    all += text;
  }
  return all;
}

std::string textOfDictionary(const Dictionary& dictionary) {
  std::vector<std::string> texts;
  for (const auto& entry : dictionary.entries()) texts.push_back(textOfObject(entry.second));
  return joined(texts);
}

std::string textOfObject(const Object& value) {
  if (const auto* text = value.text()) return *text;
  if (const auto* number = value.as<std::int64_t>()) return std::to_string(*number);
  if (const auto* number = value.as<double>()) return std::to_string(*number);
  if (const auto* date = value.as<Date>()) return date->toText();
  if (const auto* dictionary = value.dictionary()) return textOfDictionary(*dictionary);
  if (const auto data = value.data()) return std::to_string(data->size()) + " bytes";
  if (const auto* list = value.array()) {
    std::vector<std::string> texts;
    for (const auto& element : *list) texts.push_back(textOfObject(element));
    return joined(texts);
  }
  return {};
}

std::string inOneLine(const std::string& text) {
  std::string line;
  for (const char c : text) {
    if (c == '\n') {
      line += ", ";
    } else if (static_cast<unsigned char>(c) >= 0x20 && c != 0x7F) {
      line += c;
    } else if (c == '\t') {
      line += ' ';
    }
  }
  return line;
}

// "work" of "_$!<Work>!$_".
std::string labelText(const std::string& label) {
  constexpr std::string_view kFront = "_$!<";
  constexpr std::string_view kBack = ">!$_";
  if (label.size() <= kFront.size() + kBack.size() || !label.starts_with(kFront) ||
      !label.ends_with(kBack)) {
    return label;
  }
  auto word = label.substr(kFront.size(), label.size() - kFront.size() - kBack.size());
  std::transform(word.begin(), word.end(), word.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return word;
}

std::string textOfEntry(const MultiEntry& entry) {
  auto text = textOfObject(entry.value);
  if (entry.label && !entry.label->empty()) text += " (" + labelText(*entry.label) + ")";
  return text;
}

}  // namespace

std::string encodedSingle(PropertyId property, const PropertyValue& value) {
  if (isEmptyValue(value)) return {};
  if (property != property_id::kGroupName) return encodedBag(property, value);
  const auto* name = std::get_if<Object>(&value);
  return name != nullptr && name->text() != nullptr ? *name->text() : std::string();
}

std::string encodedEntry(PropertyId property, MultiEntry entry) {
  if (entry.value.isMissing()) return {};
  entry.identifier = 1;
  MultiValue values;
  values.entries.push_back(std::move(entry));
  return encodedBag(property, MultiValuePtr(std::make_shared<const MultiValue>(std::move(values))));
}

std::string encodedLine(const MultiEntry& line) {
  if (line.value.isMissing()) return {};
  return encodedBag(property_id::kUnmodelledLines, Object(Array{line.value}));
}

std::string encodedPhoto(const Data& photo) {
  return photo ? *photo : std::string();
}

CardContent withOurs(const CardContent& content, const ValueConflict& conflict) {
  auto result = content;
  if (conflict.property == kPhotoWord) {
    result.photo = conflict.ours.empty() ? nullptr : makeData(conflict.ours);
    return result;
  }
  if (content.isGroup && conflict.property == kGroupNameWord) {
    result.properties.set(property_id::kGroupName,
                          conflict.ours.empty() ? Object() : Object(conflict.ours));
    return result;
  }
  const auto theirs = decoded(conflict.theirs);
  const auto ours = decoded(conflict.ours);
  const auto property = ours.property != 0 ? ours.property : theirs.property;
  if (property == 0) return result;
  if (property == property_id::kUnmodelledLines) {
    putLine(result, theirs, ours);
  } else if (std::holds_alternative<MultiValuePtr>(ours.value) ||
             std::holds_alternative<MultiValuePtr>(theirs.value)) {
    result.properties.set(property, withEntry(result.properties.value(property),
                                              entryOf(theirs.value), entryOf(ours.value)));
  } else {
    result.properties.set(property, ours.value);
  }
  return result;
}

std::string textOfValue(const std::string& property, const std::string& encoded) {
  if (encoded.empty()) return "nothing";
  if (property == kPhotoWord) {
    return "a picture of " + std::to_string(encoded.size()) + " bytes";
  }
  if (property == kGroupNameWord) return inOneLine(encoded);
  const auto value = decoded(encoded);
  if (const auto* entry = entryOf(value.value)) return inOneLine(textOfEntry(*entry));
  const auto* single = std::get_if<Object>(&value.value);
  if (single == nullptr || single->isMissing()) return "nothing";
  if (value.property == property_id::kUnmodelledLines) {
    const auto line = lineOf(value.value).value_or("");
    vcard::ContentLine parsed;
    const auto head = vcard::parseHead(line, parsed);
    return inOneLine(head == std::string::npos ? line : line.substr(head + 1));
  }
  return inOneLine(textOfObject(*single));
}

}  // namespace ox::sync
