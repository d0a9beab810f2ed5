#include "ox/OxMacAddressBookSDK/persons/joined_values.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "ox/OxMacAddressBookSDK/admin/stored_names.hpp"
#include "ox/base/text/case.hpp"
#include "ox/base/text/digits.hpp"
#include "ox/records/property_keys.hpp"
#include "ox/vcard/lines/content_line.hpp"
#include "ox/vcard/lines/decode.hpp"
#include "ox/vcard/unmodelled/property_detail.hpp"

namespace ox {
namespace {

constexpr std::array kNameParts = {property_id::kFirst, property_id::kMiddle, property_id::kLast};

bool isNamePart(PropertyId property) {
  return std::ranges::find(kNameParts, property) != kNameParts.end();
}

std::string readable(const Object& object) {
  if (const auto* text = object.text()) return *text;
  if (const auto* date = object.as<Date>()) return date->toText();
  if (const auto fields = object.dictionary()) {
    std::string text;
    for (const auto& [key, value] : fields->entries()) {
      const auto part = readable(value);
      if (!part.empty()) text += (text.empty() ? "" : ", ") + part;
    }
    return text;
  }
  return object.toText().value_or("");
}

bool isSameNumber(const std::string& one, const std::string& other) {
  const auto digits = decimalDigits(one);
  // What is a country's prefix behind a plus is none without it.
  const auto hasPlus = [](const std::string& text) { return text.find('+') != std::string::npos; };
  return !digits.empty() && hasPlus(one) == hasPlus(other) && isOfDigits(one) &&
         isOfDigits(other) && digits == decimalDigits(other);
}

// Whether two entries of the property say the same to a reader.
bool saySame(PropertyId property, const Object& one, const Object& other) {
  if (one == other) return true;
  const auto* text = one.text();
  const auto* otherText = other.text();
  if (text == nullptr || otherText == nullptr) return false;
  if (property == property_id::kPhone) return isSameNumber(*text, *otherText);
  return property == property_id::kEmail && equalsIgnoringCase(*text, *otherText);
}

class Join {
 public:
  Join(const PropertyBag& first, const PropertyBag& second) : second_(second) {
    joined_.values = first;
  }

  JoinedValues run() {
    joinName();
    for (const auto& [property, value] : second_.entries()) {
      if (isNamePart(property) || property == property_id::kNote) continue;
      if (property == property_id::kCardUid) continue;
      if (property == property_id::kUnmodelledLines) continue;
      if (const auto* entries = std::get_if<MultiValuePtr>(&value)) {
        joinEntries(property, **entries);
      } else {
        joinSingle(property, std::get<Object>(value));
      }
    }
    joinCalled();
    joinLines();
    joinNotes();
    return std::move(joined_);
  }

 private:
  const std::string& partOf(const PropertyBag& values, PropertyId part) const {
    static const std::string kNone;
    const auto* text = values.text(part);
    return text != nullptr ? *text : kNone;
  }

  std::string nameIn(const PropertyBag& values) const {
    std::string name;
    for (const auto part : kNameParts) {
      const auto& text = partOf(values, part);
      if (!text.empty()) name += (name.empty() ? "" : " ") + text;
    }
    return name;
  }

  void joinName() {
    const auto contradicts = [&](PropertyId part) {
      const auto& own = partOf(joined_.values, part);
      const auto& other = partOf(second_, part);
      return !own.empty() && !other.empty() && own != other;
    };
    const auto other = nameIn(second_);
    if (std::ranges::any_of(kNameParts, contradicts)) {
      // Other case and accents alone are another spelling of the same name.
      if (foldedForSearch(nameIn(joined_.values)) != foldedForSearch(other)) {
        intoNote(property_id::kFirst, "Name", other);
      }
      return;
    }
    for (const auto part : kNameParts) {
      const auto& text = partOf(second_, part);
      if (text.empty() || !partOf(joined_.values, part).empty()) continue;
      joined_.values.set(part, Object(text));
      joined_.added.push_back({part, text, JoinedBy::Value});
    }
  }

  void joinSingle(PropertyId property, const Object& value) {
    const auto text = readable(value);
    if (text.empty()) return;
    const auto& own = joined_.values.value(property);
    const auto* held = std::get_if<Object>(&own);
    const auto ownText = held != nullptr ? readable(*held) : std::string();
    if (ownText == text) return;
    if (ownText.empty()) {
      joined_.values.set(property, value);
      taken_.push_back({property, 0, 0});
      joined_.added.push_back({property, text, JoinedBy::Value});
      return;
    }
    intoNote(property, propertyTitleOfStored(property_table::nameOf(property)), text);
  }

  void joinEntries(PropertyId property, const MultiValue& others) {
    const auto* held = std::get_if<MultiValuePtr>(&joined_.values.value(property));
    MultiValue entries = held != nullptr && *held ? **held : MultiValue();
    const auto ownCount = entries.entries.size();
    for (const auto& entry : others.entries) {
      const auto own = entries.entries.begin() + static_cast<std::ptrdiff_t>(ownCount);
      const auto known = std::find_if(entries.entries.begin(), own, [&](const MultiEntry& each) {
        return saySame(property, each.value, entry.value);
      });
      if (known != own) {
        leaveLabel(property, *known, entry);
        continue;
      }
      const auto identifier = entries.add(entry.value, entry.label);
      taken_.push_back({property, entry.identifier, identifier});
      if (ownCount == 0 && others.primary == entry.identifier) entries.primary = identifier;
      joined_.added.push_back({property, readable(entry.value), JoinedBy::Value});
    }
    if (entries.entries.size() > ownCount) {
      joined_.values.set(property, std::make_shared<const MultiValue>(std::move(entries)));
    }
  }

  void leaveLabel(PropertyId property, const MultiEntry& known, const MultiEntry& entry) {
    if (!entry.label || entry.label->empty() || entry.label == known.label) return;
    joined_.added.push_back({property,
                             labelTitleOfStored(*entry.label) + ": " + readable(entry.value),
                             JoinedBy::None});
  }

  static std::vector<std::string> linesIn(const PropertyBag& values) {
    std::vector<std::string> lines;
    const auto* object = std::get_if<Object>(&values.value(property_id::kUnmodelledLines));
    const auto array = object != nullptr ? object->array() : nullptr;
    if (!array) return lines;
    for (const auto& element : *array) {
      if (const auto* text = element.text()) lines.push_back(*text);
    }
    return lines;
  }

  // What the other card said of a value that is taken over, with the value's new place. Groups tie
  // it to lines that go without them, and ranks are those among its own values.
  std::string detailOfTaken(const std::string& line) const {
    const auto detail = vcard::decodeDetail(line);
    using enum vcard::DetailKind;
    if (!detail || detail->kind == Group || detail->kind == Preference) return {};
    for (const auto& each : taken_) {
      if (each.property != detail->property || each.was != detail->entry) continue;
      return vcard::encodeDetail({each.property, each.is, detail->kind, detail->text});
    }
    return {};
  }

  // What was said of values by their places is not true of the joined ones; whole lines are.
  static bool isAboutWholeCard(const std::string& line) {
    if (line.empty() || line.front() == ';') return false;
    for (const std::string_view name :
         {"FN", "REV", "PRODID", "UID", "KIND", "N", "VERSION", "X-ABSHOWAS"}) {
      const bool isThis = line.starts_with(name) && line.size() > name.size() &&
                          (line[name.size()] == ':' || line[name.size()] == ';');
      if (isThis) return false;
    }
    return true;
  }

  // The group of a line ties it to a value of the card that it came from.
  static std::string withoutGroup(const std::string& line) {
    const auto end = line.find_first_of(".;:");
    return end != std::string::npos && line[end] == '.' ? line.substr(end + 1) : line;
  }

  // What the card called the person, where that is no name of hers put together; empty without it.
  static std::string calledIn(const std::vector<std::string>& lines) {
    for (const auto& line : lines) {
      vcard::ContentLine content;
      if (!line.starts_with("FN:") && !line.starts_with("FN;")) continue;
      const auto colon = vcard::parseHead(line, content);
      const bool isMade = std::ranges::any_of(
          content.parameters, [](const vcard::Parameter& each) { return each.name == "DERIVED"; });
      if (colon == std::string::npos || isMade) continue;
      return vcard::unescaped(std::string_view(line).substr(colon + 1));
    }
    return {};
  }

  void joinCalled() {
    const auto called = calledIn(linesIn(second_));
    if (called.empty() || called == calledIn(linesIn(joined_.values))) return;
    if (called == nameIn(joined_.values) || called == nameIn(second_)) return;
    intoNote(property_id::kFirst, "Name", called);
  }

  void joinLines() {
    auto lines = linesIn(joined_.values);
    const auto ownCount = lines.size();
    for (const auto& line : linesIn(second_)) {
      if (auto detail = detailOfTaken(line); !detail.empty()) {
        lines.push_back(std::move(detail));
        continue;
      }
      if (!isAboutWholeCard(line)) continue;
      auto plain = withoutGroup(line);
      if (!isAboutWholeCard(plain)) continue;
      const bool isKnown = std::any_of(
          lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(ownCount),
          [&](const std::string& known) { return known == line || withoutGroup(known) == plain; });
      if (isKnown) continue;
      joined_.added.push_back({property_id::kUnmodelledLines, plain, JoinedBy::Value});
      lines.push_back(std::move(plain));
    }
    if (lines.size() == ownCount) return;
    Array array;
    for (auto& line : lines) array.emplace_back(std::move(line));
    joined_.values.set(property_id::kUnmodelledLines, Object(std::move(array)));
  }

  void intoNote(PropertyId property, const std::string& title, const std::string& text) {
    noteLines_.push_back({title + ": " + text, {property, text, JoinedBy::Note}});
  }

  void joinNotes() {
    auto note = partOf(joined_.values, property_id::kNote);
    const auto append = [&](const std::string& text, JoinedValue added) {
      if (text.empty() || holdsLines(note, text)) return;
      note += (note.empty() ? "" : "\n") + text;
      joined_.added.push_back(std::move(added));
      joined_.values.set(property_id::kNote, Object(note));
    };
    const auto& other = partOf(second_, property_id::kNote);
    append(other, {property_id::kNote, other, JoinedBy::Value});
    for (auto& [line, added] : noteLines_) append(line, std::move(added));
  }

  // As whole lines: part of another word says something else.
  static bool holdsLines(const std::string& note, const std::string& lines) {
    return ("\n" + note + "\n").find("\n" + lines + "\n") != std::string::npos;
  }

  // A value of the second record that the first has now, and the entries that it was and is: 0 for
  // a value that a record has once.
  struct Taken {
    PropertyId property = 0;
    std::uint64_t was = 0;
    std::uint64_t is = 0;
  };

  const PropertyBag& second_;
  JoinedValues joined_;
  std::vector<Taken> taken_;
  std::vector<std::pair<std::string, JoinedValue>> noteLines_;
};

}  // namespace

JoinedValues joinedValues(const PropertyBag& first, const PropertyBag& second) {
  return Join(first, second).run();
}

}  // namespace ox
