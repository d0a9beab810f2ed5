#include "oxcontacts/edit/person_text.hpp"

#include <algorithm>

#include "ox/OxAddressBookSDK/objects/OxObjectAddress.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectInstantMessage.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPersonName.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/person_entries.hpp"
#include "ox/base/text/joined.hpp"
#include "ox/records/property_keys.hpp"
#include "oxcontacts/edit/assignment.hpp"
#include "oxcontacts/edit/value_parts.hpp"
#include "oxcontacts/output/shown_value.hpp"
#include "oxcontacts/output/value_json.hpp"

namespace ox::program {
namespace {

void setPart(TextParts& parts, const std::string& name, const Text& text) {
  if (text && !text->empty()) parts[name] = *text;
}

// Nothing without both: an account that is known by its URL alone cannot be typed.
Text accountText(const Text& service, const Text& user) {
  if (!service || service->empty() || !user || user->empty()) return std::nullopt;
  return *service + ":" + *user;
}

TextParts partsOf(const OxProperty& property, const Object& value) {
  TextParts parts;
  if (const auto name = value.host<OxObjectPersonName>()) {
    setPart(parts, "first", name->first());
    setPart(parts, "middle", name->middle());
    setPart(parts, "last", name->last());
  } else if (const auto address = value.host<OxObjectAddress>()) {
    for (const auto part : partNames(property)) {
      setPart(parts, std::string(part), address->stringValueByFieldName(addressFieldOf(part)));
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

Object valueOf(const OxProperty& property, const TextParts& parts) {
  if (isName(property)) {
    const auto part = [&](const char* name) {
      const auto found = parts.find(name);
      return found != parts.end() ? Text(found->second) : Text();
    };
    return OxObjectPersonName::initWithFirst_middle_last(part("first"), part("middle"),
                                                         part("last"));
  }
  if (holdsAddresses(property)) {
    auto address = OxObjectAddress::init();
    for (const auto& [name, text] : parts) {
      address->setStringValue_forFieldName(text, addressFieldOf(name));
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

std::string inOneLine(const TextParts& parts) {
  std::vector<std::string_view> texts;
  for (const auto& [name, text] : parts) texts.emplace_back(text);
  return joined(texts, ", ");
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
      auto parts = partsOf(*property, single->value());
      if (!parts.empty()) written.entries.push_back({0, "", std::move(parts)});
    } else if (const auto multiple = multipleOf(value)) {
      const PersonEntries entries(person, property);
      const auto identifiers = entries.identifiers();
      for (std::size_t i = 0; i < identifiers.size() && i < multiple->count(); ++i) {
        const auto element = multiple->valueAtIndex(i);
        const auto& label = element->label();
        auto parts = partsOf(*property, element->value());
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
        overtaken.push_back(shortNameOf(*written.property) + " \"" + inOneLine(parts) + "\"");
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
