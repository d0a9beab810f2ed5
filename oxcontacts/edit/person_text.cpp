#include "oxcontacts/edit/person_text.hpp"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <string_view>
#include <yaml-cpp/yaml.h>

#include "ox/OxAddressBookSDK/objects/OxObjectAddress.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectInstantMessage.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPersonName.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/person_entries.hpp"
#include "ox/base/text/case.hpp"
#include "ox/records/property_keys.hpp"
#include "oxcontacts/context.hpp"
#include "oxcontacts/edit/assignment.hpp"
#include "oxcontacts/output/shown_value.hpp"
#include "oxcontacts/output/value_json.hpp"

namespace ox::program {
namespace {

struct AddressPart {
  const char* name;
  std::string_view field;
};
constexpr std::array kAddressParts = {
    AddressPart{"street", OxAddressFieldStreet},         AddressPart{"city", OxAddressFieldCity},
    AddressPart{"state", OxAddressFieldState},           AddressPart{"zip", OxAddressFieldZIP},
    AddressPart{"country", OxAddressFieldCountryOrArea},
};
constexpr std::array kNameParts = {"first", "middle", "last"};

bool isMultiple(const OxProperty& property) {
  return property.valueType() == value_type::kMultiple;
}

bool isName(const OxProperty& property) {
  return property.valueType() == value_type::kPersonName;
}

bool isAddress(const OxProperty& property) {
  return isMultiple(property) && property.subValueType() == value_type::kAddress;
}

std::vector<std::string> partNames(const OxProperty& property) {
  if (isName(property)) return {kNameParts.begin(), kNameParts.end()};
  std::vector<std::string> names;
  for (const auto& part : kAddressParts) {
    if (isAddress(property)) names.emplace_back(part.name);
  }
  return names;
}

void setPart(TextParts& parts, const std::string& name, const Text& text) {
  if (text && !text->empty()) parts[name] = *text;
}

// Nothing without both: an account that is known by its URL alone cannot be typed.
Text accountText(const Text& service, const Text& user) {
  if (!service || service->empty() || !user || user->empty()) return std::nullopt;
  return *service + ":" + *user;
}

TextParts partsOf(const Object& value) {
  TextParts parts;
  if (const auto name = value.host<OxObjectPersonName>()) {
    setPart(parts, "first", name->first());
    setPart(parts, "middle", name->middle());
    setPart(parts, "last", name->last());
  } else if (const auto address = value.host<OxObjectAddress>()) {
    for (const auto& part : kAddressParts) {
      setPart(parts, part.name, address->stringValueByFieldName(part.field));
    }
  } else if (const auto message = value.host<OxObjectInstantMessage>()) {
    const auto& server = message->server();
    setPart(parts, "", accountText(server ? Text(server->name()) : Text(), message->userName()));
  } else if (const auto* fields = value.dictionary()) {
    setPart(parts, "",
            accountText(fields->get(kABSocialProfileServiceKey).toText(),
                        fields->get(kABSocialProfileUsernameKey).toText()));
  } else {
    setPart(parts, "", readableText(value));
    if (const auto* text = value.text()) setPart(parts, "", *text);  // with its line breaks
  }
  return parts;
}

// A scalar that every reader takes for this very text.
std::string scalar(const std::string& text) {
  constexpr std::string_view kPlain = "-+_ ()/.@";
  const auto isPlain = [&](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           byte >= 0xC3U || (byte >= 0x80U && byte < 0xC0U) ||
           kPlain.find(c) != std::string_view::npos;
  };
  const auto isLetter = [&](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '+' ||
           static_cast<unsigned char>(c) >= 0xC3U;
  };
  const bool plain = !text.empty() && isLetter(text.front()) && text.back() != ' ' &&
                     std::ranges::all_of(text, isPlain) && !equalsIgnoringCase(text, "null");
  // A JSON string is a YAML scalar.
  return plain ? text : nlohmann::json(text).dump();
}

// A text of several lines as such, where YAML can say it without a word about its ends.
bool isBlock(const std::string& text) {
  if (text.find('\n') == std::string::npos || text.back() == '\n' || text.front() == ' ' ||
      text.front() == '\n') {
    return false;
  }
  return std::ranges::none_of(text, [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (byte < 0x20U && c != '\n') || byte == 0x7FU || byte == 0xC2U || byte == 0xE2U ||
           byte == 0xEFU;
  });
}

void appendValue(const std::string& text, const std::string& indent, std::string& yaml) {
  if (!isBlock(text)) {
    yaml += " " + scalar(text) + "\n";
    return;
  }
  yaml += " |-\n";
  std::size_t at = 0;
  while (at <= text.size()) {
    const auto end = std::min(text.find('\n', at), text.size());
    if (end > at) yaml += indent + text.substr(at, end - at);
    yaml += '\n';
    at = end + 1;
  }
}

void appendParts(const OxProperty& property, const TextParts& parts, const std::string& indent,
                 std::string& yaml) {
  for (const auto& name : partNames(property)) {
    yaml += indent + name + ":";
    const auto part = parts.find(name);
    if (part == parts.end()) {
      yaml += '\n';
    } else {
      appendValue(part->second, indent + "  ", yaml);
    }
  }
}

void appendEntry(const OxProperty& property, const TextEntry& entry, std::string& yaml) {
  yaml += "  -";
  const bool hasParts = !partNames(property).empty();
  if (hasParts) {
    yaml += " " + (entry.label.empty() ? "\"\"" : scalar(entry.label)) + ":\n";
    appendParts(property, entry.parts, "      ", yaml);
    return;
  }
  if (!entry.label.empty()) yaml += " " + scalar(entry.label) + ":";
  appendValue(entry.parts.empty() ? "" : entry.parts.begin()->second,
              entry.label.empty() ? "    " : "      ", yaml);
}

[[noreturn]] void misread(const YAML::Mark& mark, const std::string& what) {
  throw CommandError(kUsage,
                     (mark.line >= 0 ? "line " + std::to_string(mark.line + 1) + ": " : "") + what);
}

std::string textIn(const YAML::Node& node) {
  if (node.IsNull()) return {};
  if (!node.IsScalar()) misread(node.Mark(), "one text is expected here");
  return node.Scalar();
}

TextParts readParts(const OxProperty& property, const YAML::Node& node) {
  TextParts parts;
  const auto names = partNames(property);
  if (names.empty()) {
    setPart(parts, "", textIn(node));
    return parts;
  }
  if (node.IsNull()) return parts;
  std::string known;
  for (const auto& name : names) known += (known.empty() ? "" : ", ") + name;
  if (!node.IsMap()) misread(node.Mark(), "the parts are expected here: " + known);
  for (const auto& each : node) {
    const auto name = textIn(each.first);
    if (std::ranges::find(names, name) == names.end()) {
      misread(each.first.Mark(), "there is no part \"" + name + "\"; there are " + known);
    }
    setPart(parts, name, textIn(each.second));
  }
  return parts;
}

// "value", or "label: value".
TextEntry readEntry(const OxProperty& property, const YAML::Node& node) {
  TextEntry entry;
  if (!node.IsMap()) {
    if (!partNames(property).empty()) misread(node.Mark(), "a label and parts are expected here");
    entry.parts = readParts(property, node);
    return entry;
  }
  if (node.size() != 1) misread(node.Mark(), "one label and its value are expected here");
  entry.label = textIn(node.begin()->first);
  entry.parts = readParts(property, node.begin()->second);
  return entry;
}

TextProperty readProperty(const std::string& name, const YAML::Node& key, const YAML::Node& node) {
  const auto property = propertyCalled(name);
  if (!property) {
    misread(key.Mark(), "there is no property \"" + name + "\"; there are " + propertyNames());
  }
  TextProperty read{property, {}};
  if (!isMultiple(*property)) {
    auto parts = readParts(*property, node);
    if (!parts.empty()) read.entries.push_back({0, "", std::move(parts)});
    return read;
  }
  if (node.IsNull()) return read;
  if (!node.IsSequence()) misread(node.Mark(), "a list is expected here: lines that begin with -");
  for (const auto& each : node) {
    auto entry = readEntry(*property, each);
    if (!entry.parts.empty()) read.entries.push_back(std::move(entry));
  }
  return read;
}

Object valueOf(const OxProperty& property, const TextParts& parts) {
  if (isName(property)) {
    const auto part = [&](const char* name) {
      const auto found = parts.find(name);
      return found != parts.end() ? Text(found->second) : Text();
    };
    return OxObjectPersonName::initWithFirst_middle_last(part("first"), part("middle"),
                                                         part("last"));
  }
  if (isAddress(property)) {
    auto address = OxObjectAddress::init();
    for (const auto& part : kAddressParts) {
      const auto found = parts.find(part.name);
      if (found != parts.end()) address->setStringValue_forFieldName(found->second, part.field);
    }
    return std::static_pointer_cast<const HostObject>(address);
  }
  return valueFromText(property, parts.begin()->second);
}

const TextProperty* findProperty(const PersonText& text, const OxPropertyPtr& property) {
  const auto found = std::ranges::find(text, property, &TextProperty::property);
  return found != text.end() ? &*found : nullptr;
}

bool isSame(const TextEntry& one, const TextEntry& other) {
  return one.label == other.label && one.parts == other.parts;
}

// Which entry of the record each one of the text is: one that says the same, else one of the same
// value, else one of the same label, else the one that stood in its place.
std::vector<TextEntry> recognised(const std::vector<TextEntry>& before,
                                  std::vector<TextEntry> after) {
  std::vector<bool> taken(before.size());
  const auto take = [&](const auto& isThis) {
    for (std::size_t i = 0; i < after.size(); ++i) {
      for (std::size_t k = 0; after[i].was == 0 && k < before.size(); ++k) {
        if (taken[k] || !isThis(before[k], k, after[i], i)) continue;
        taken[k] = true;
        after[i].was = before[k].was;
      }
    }
  };
  using Entry = const TextEntry&;
  take([](Entry old, std::size_t, Entry now, std::size_t) { return isSame(old, now); });
  take([](Entry old, std::size_t, Entry now, std::size_t) { return old.parts == now.parts; });
  take([](Entry old, std::size_t k, Entry now, std::size_t i) {
    return old.label == now.label && k == i;
  });
  take([](Entry old, std::size_t, Entry now, std::size_t) { return old.label == now.label; });
  return after;
}

// Those that were left alone may be such as nobody can type.
void requireValues(const TextProperty& before, const TextProperty& after) {
  for (const auto& entry : after.entries) {
    const bool isKnown = std::ranges::any_of(
        before.entries, [&](const TextEntry& known) { return known.parts == entry.parts; });
    if (!isKnown) static_cast<void>(valueOf(*after.property, entry.parts));
  }
}

void arrange(const TextProperty& before, const TextProperty& after, _ABPerson& person) {
  PersonEntries entries(person, after.property);
  std::vector<std::uint64_t> shown;
  for (const auto& entry : before.entries) shown.push_back(entry.was);
  // Labels that were left alone stay what they are, however they are shown.
  std::map<std::uint64_t, Text> labels;
  const auto values = multipleOf(person.valueByProperty(after.property));
  const auto identifiers = entries.identifiers();
  for (std::size_t i = 0; values && i < identifiers.size() && i < values->count(); ++i) {
    const auto label = values->valueAtIndex(i)->label();
    labels[identifiers[i]] = label ? label->name() : Text();
  }
  std::vector<PersonEntries::Arranged> arranged;
  for (const auto& entry : recognised(before.entries, after.entries)) {
    const auto old = std::ranges::find(before.entries, entry.was, &TextEntry::was);
    const bool isOld = entry.was != 0 && old != before.entries.end();
    PersonEntries::Arranged wanted{entry.was, {}, {}};
    const auto stored = labels.find(entry.was);
    if (isOld && old->label == entry.label && stored != labels.end()) {
      wanted.label = stored->second;
    } else if (!entry.label.empty()) {
      wanted.label = labelKeyOf(entry.label);
    }
    if (!isOld || old->parts != entry.parts) wanted.value = valueOf(*after.property, entry.parts);
    arranged.push_back(std::move(wanted));
  }
  entries.arrange(arranged, shown);
  entries.write();
}

void setSingle(const TextProperty& after, _ABPerson& person) {
  const auto& property = after.property;
  OxValuePtr value;
  if (!after.entries.empty() || isName(*property)) {
    const auto parts = after.entries.empty() ? TextParts() : after.entries.front().parts;
    value = person.singleValueByMacValue_property(valueOf(*property, parts), property);
  }
  person.setValue_byProperty(value, property);
}

bool isSame(const TextProperty& before, const TextProperty& after) {
  return std::ranges::equal(before.entries, after.entries,
                            [](const auto& one, const auto& other) { return isSame(one, other); });
}

std::string joined(const TextParts& parts) {
  std::string text;
  for (const auto& [name, part] : parts) text += (text.empty() ? "" : ", ") + part;
  return text;
}

// What another program has written meanwhile and the edit replaces.
std::vector<TextParts> replacedBy(const TextProperty& before, const TextProperty& present,
                                  const TextProperty& wanted) {
  std::vector<TextParts> replaced;
  if (!isMultiple(*before.property)) {
    if (!isSame(before, present) && !present.entries.empty()) {
      replaced.push_back(present.entries.front().parts);
    }
    return replaced;
  }
  const auto arranged = recognised(before.entries, wanted.entries);
  for (const auto& old : before.entries) {
    const auto now = std::ranges::find(present.entries, old.was, &TextEntry::was);
    if (now == present.entries.end() || now->parts == old.parts) continue;
    const auto edited = std::ranges::find(arranged, old.was, &TextEntry::was);
    const bool isLeftAlone = edited != arranged.end() && edited->parts == old.parts;
    if (!isLeftAlone) replaced.push_back(now->parts);
  }
  return replaced;
}

}  // namespace

PersonText textOf(_ABPerson& person) {
  PersonText text;
  for (const auto& property : assignableProperties()) {
    TextProperty written{property, {}};
    const auto value = shownValue(person, property);
    if (const auto single = singleOf(value)) {
      auto parts = partsOf(single->value());
      if (!parts.empty()) written.entries.push_back({0, "", std::move(parts)});
    } else if (const auto multiple = multipleOf(value)) {
      const PersonEntries entries(person, property);
      const auto identifiers = entries.identifiers();
      for (std::size_t i = 0; i < identifiers.size() && i < multiple->count(); ++i) {
        const auto element = multiple->valueAtIndex(i);
        const auto& label = element->label();
        auto parts = partsOf(element->value());
        // What shows nothing cannot be edited, and stays.
        if (parts.empty()) continue;
        written.entries.push_back({identifiers[i],
                                   label ? labelWords(label->displayName().value_or("")) : "",
                                   std::move(parts)});
      }
    }
    text.push_back(std::move(written));
  }
  return text;
}

std::string yamlOf(const PersonText& text) {
  std::string yaml;
  for (const auto& [property, entries] : text) {
    yaml += shortNameOf(*property) + ":";
    if (isName(*property)) {
      yaml += '\n';
      appendParts(*property, entries.empty() ? TextParts() : entries.front().parts, "  ", yaml);
    } else if (isMultiple(*property)) {
      yaml += '\n';
      for (const auto& entry : entries) appendEntry(*property, entry, yaml);
    } else if (entries.empty()) {
      yaml += '\n';
    } else {
      appendValue(entries.front().parts.begin()->second, "  ", yaml);
    }
  }
  return yaml;
}

PersonText readYaml(const std::string& yaml) {
  try {
    const auto documents = YAML::LoadAll(yaml);
    PersonText text;
    // Whatever stands behind the mark would pass for taken out.
    if (documents.size() > 1) misread(documents[1].Mark(), "a line of --- or ... ends the person");
    if (documents.empty()) return text;
    const auto& root = documents.front();
    if (root.IsNull()) return text;
    if (!root.IsMap()) misread(root.Mark(), "properties are expected here, as in \"note: text\"");
    for (const auto& each : root) {
      const auto name = textIn(each.first);
      auto property = readProperty(name, each.first, each.second);
      if (findProperty(text, property.property) != nullptr) {
        misread(each.first.Mark(), "\"" + name + "\" stands here a second time");
      }
      text.push_back(std::move(property));
    }
    return text;
  } catch (const YAML::Exception& error) {
    misread(error.mark, error.msg);
  }
}

bool applyEdits(const PersonText& before, const PersonText& after, _ABPerson& person,
                std::vector<std::string>& overtaken) {
  std::vector<std::pair<const TextProperty*, TextProperty>> edits;
  const auto present = textOf(person);
  for (const auto& written : before) {
    const auto* now = findProperty(after, written.property);
    // A property that was taken out with its line has no value any more.
    auto wanted = now != nullptr ? *now : TextProperty{written.property, {}};
    if (isSame(written, wanted)) continue;
    requireValues(written, wanted);
    if (const auto* there = findProperty(present, written.property)) {
      for (const auto& parts : replacedBy(written, *there, wanted)) {
        overtaken.push_back(shortNameOf(*written.property) + " \"" + joined(parts) + "\"");
      }
    }
    edits.emplace_back(&written, std::move(wanted));
  }
  for (const auto& [written, wanted] : edits) {
    if (isMultiple(*written->property)) {
      arrange(*written, wanted, person);
    } else {
      setSingle(wanted, person);
    }
  }
  return !edits.empty();
}

}  // namespace ox::program
