#include "ox/vcard/properties/name.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <span>
#include <utility>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/decode.hpp"
#include "ox/vcard/lines/line_writer.hpp"
#include "ox/vcard/lines/structured_value.hpp"
#include "ox/vcard/properties/each_property.hpp"
#include "ox/vcard/properties/formatted_name.hpp"
#include "ox/vcard/properties/full_name.hpp"
#include "ox/vcard/unmodelled/line_form.hpp"

namespace ox::vcard {
namespace {

// One component of N: its text, and what joins the elements of a list in it.
struct NamePart {
  PropertyId property;
  std::string_view separator;
};

// In the order of RFC 6350, section 6.2.2.
constexpr std::array kParts = {
    NamePart{property_id::kLast, " "}, NamePart{property_id::kFirst, " "},
    NamePart{property_id::kMiddle, " "}, NamePart{property_id::kTitle, " "},
    NamePart{property_id::kSuffix, ", "}};

// RFC 9554, section 2.2, adds two: the second family name and the generation, which cards repeat in
// the others.
constexpr std::size_t kComponents = kParts.size() + 2;

template <typename TextOf>
NameParts partsFrom(TextOf&& textOf) {
  return {.last = textOf(property_id::kLast),
          .first = textOf(property_id::kFirst),
          .middle = textOf(property_id::kMiddle),
          .title = textOf(property_id::kTitle),
          .suffix = textOf(property_id::kSuffix)};
}

NameParts partsHeldBy(CollectedValues& values) {
  return partsFrom([&](PropertyId id) { return std::string_view(values.text(id)); });
}

NameParts partsHeldBy(PropertyWriter& card) {
  return partsFrom([&](PropertyId id) {
    const auto text = card.textOf(id);
    // A reader takes blanks around a component off.
    if (trimmed(text) != text) card.noteInexact(id);
    return trimmed(text);
  });
}

std::array<std::string_view, 5> inOrder(const NameParts& parts) {
  return {parts.last, parts.first, parts.middle, parts.title, parts.suffix};
}

bool isEmpty(const NameParts& parts) {
  const auto all = inOrder(parts);
  return std::all_of(all.begin(), all.end(), [](std::string_view part) { return part.empty(); });
}

// The value of N for these parts, which are as CardText leaves them.
std::string valueOfName(const NameParts& parts) {
  std::string value;
  for (const auto part : inOrder(parts)) {
    appendTextEscaped(part, value);
    value += ';';
  }
  value.pop_back();
  return value;
}

std::string valueOfUncleanName(const NameParts& parts) {
  const CardText last(parts.last);
  const CardText first(parts.first);
  const CardText middle(parts.middle);
  const CardText title(parts.title);
  const CardText suffix(parts.suffix);
  return valueOfName({trimmed(last.view()), trimmed(first.view()), trimmed(middle.view()),
                      trimmed(title.view()), trimmed(suffix.view())});
}

// True when a reader makes these parts of the value.
bool givesName(std::string_view value, const NameParts& parts) {
  const auto read = components<kComponents + 1>(value);
  // None of those that RFC 9554 adds, or both.
  const bool hasMore = read[kParts.size()].data() != nullptr;
  const bool hasAll = read[kComponents - 1].data() != nullptr;
  if (hasMore != hasAll || read[kComponents].data() != nullptr) return false;
  const auto wanted = inOrder(parts);
  for (std::size_t i = 0; i < kParts.size(); ++i) {
    const auto part = unescapedList(read[i], Dialect::V30, kParts[i].separator);
    if (trimmed(part) != wanted[i]) return false;
  }
  return true;
}

// The readings of the last and the first name that a SORT-AS parameter gives (RFC 6350, section
// 5.9); some programs part them by a semicolon.
struct Readings {
  std::string last;
  std::string first;

  bool operator==(const Readings&) const = default;
};

Readings readingsOf(const Parameter& sortAs) {
  const auto reading = parameterText(sortAs);
  const auto mark = reading.find_first_of(",;");
  Readings result{reading.substr(0, mark), {}};
  if (mark != std::string::npos) {
    result.first = trimmed(std::string_view(reading).substr(mark + 1));
  }
  return result;
}

// Of the parameter as it is preserved: ";SORT-AS=...".
Readings readingsOfPreserved(std::string_view parameter) {
  const auto equals = parameter.find('=');
  if (equals == std::string_view::npos) return {};
  return readingsOf({"SORT-AS", parameter.substr(equals + 1), ParameterKind::SortAs});
}

// RFC 9554, section 4.6: the line is a reading of N in another script.
bool isPhonetic(const ContentLine& line) {
  return std::ranges::any_of(line.parameters,
                             [](const Parameter& each) { return isWord(each.name, "PHONETIC"); });
}

// Without what follows the components of RFC 6350.
std::string_view fiveOf(std::string_view value) {
  const auto rest = components<kParts.size() + 1>(value).back();
  return rest.empty() ? value : value.substr(0, value.size() - rest.size() - 1);
}

bool hasReadings(CollectedValues& values) {
  return !values.text(property_id::kLastPhonetic).empty() ||
         !values.text(property_id::kFirstPhonetic).empty();
}

// An N gave the readings that a record has so far.
bool givesReadings(const NameLines& name) {
  return std::ranges::any_of(
      name.details, [](const PropertyDetail& each) { return each.kind == DetailKind::SortAs; });
}

// The readings that lines before this one gave are those of its SORT-AS, and nothing else was told
// of them.
bool givesHeldReadings(const ContentLine& line, CardDraft& draft) {
  const auto* sortAs = line.find(ParameterKind::SortAs);
  const Readings held{draft.values.text(property_id::kLastPhonetic),
                      draft.values.text(property_id::kFirstPhonetic)};
  if (sortAs == nullptr || readingsOf(*sortAs) != held) return false;
  return std::ranges::none_of(draft.unmodelled.details, [](const PropertyDetail& each) {
    return each.property == property_id::kLastPhonetic ||
           each.property == property_id::kFirstPhonetic;
  });
}

void readSortAs(const ContentLine& line, CardDraft& draft) {
  const auto* sortAs = line.find(ParameterKind::SortAs);
  if (sortAs == nullptr) return;
  auto readings = readingsOf(*sortAs);
  draft.values.text(property_id::kLastPhonetic) = std::move(readings.last);
  draft.values.text(property_id::kFirstPhonetic) = std::move(readings.first);
  if (draft.facts.isGroup) return;
  draft.unmodelled.details.push_back({property_id::kLastPhonetic, 0, DetailKind::SortAs,
                                      std::string(";SORT-AS=").append(sortAs->value)});
}

// The line stays as it is, and gives the readings if nothing else has.
bool readPhonetic(const ContentLine& line, CardDraft& draft) {
  auto& values = draft.values;
  if (draft.facts.isGroup || hasReadings(values)) return false;
  const auto parts = components<kParts.size() + 1>(line.value);
  const auto reading = [&](std::size_t part) {
    return unescapedList(parts[part], draft.facts.dialect, kParts[part].separator);
  };
  values.text(property_id::kLastPhonetic) = reading(0);
  values.text(property_id::kFirstPhonetic) = reading(1);
  values.text(property_id::kMiddlePhonetic) = reading(2);
  return false;
}

bool hasReadingType(const ContentLine& line) {
  bool found = false;
  for (const auto& parameter : line.parameters) {
    if (parameter.kind != ParameterKind::Type) continue;
    forEachWord(parameter.value, [&](std::string_view word) { found |= isWord(word, "X-IRMC-N"); });
  }
  return found;
}

// The parameter of N, as long as the readings are those that it gave. vCard 3.0 has none such.
void writeSortAs(PropertyWriter& card, bool isNamed) {
  const auto preserved = card.unmodelled().sortAs();
  if (preserved.empty()) return;
  const Readings held{std::string(card.textOf(property_id::kLastPhonetic)),
                      std::string(card.textOf(property_id::kFirstPhonetic))};
  if (readingsOfPreserved(preserved) != held) return;
  if (isNamed && !card.is30() && areAdmitted(preserved, card.version())) {
    card.line().raw(preserved);
  } else {
    card.wrapLater({property_id::kLastPhonetic, 0, DetailKind::SortAs, std::string(preserved)});
  }
}

// In 4.0 a person without a name has no N.
void writeParts(const NameParts& parts, PropertyWriter& card) {
  const bool isNamed = !isEmpty(parts);
  const auto verbatim = card.unmodelled().verbatimOf(property_id::kLast, 0);
  const bool isVerbatim = !verbatim.empty() && givesName(verbatim, parts);
  if (!verbatim.empty() && !isVerbatim) card.noteNameChanged();
  if (!isNamed && !card.is30()) return writeSortAs(card, isNamed);
  card.line().raw("N");
  if (isNamed) card.writeParameters(property_id::kLast);
  writeSortAs(card, isNamed);
  card.line().raw(":");
  const auto five = card.is30() ? fiveOf(verbatim) : verbatim;
  if (isVerbatim) {
    card.line().raw(five);
    if (five.size() != verbatim.size()) {
      card.wrapLater({property_id::kLast, 0, DetailKind::Verbatim, std::string(verbatim)});
    }
  } else {
    card.line().raw(valueOfName(parts));
  }
  card.line().end();
}

// True when FN says the company, as a writer leaves both.
bool isCompanyName(CardDraft& draft) {
  const CardText formatted(draft.name.formatted);
  const CardText company(draft.values.text(property_id::kOrganization));
  return trimmed(formatted.view()) == trimmed(company.view());
}

std::string groupNameOf(CardDraft& draft) {
  if (!draft.name.formatted.empty() && !draft.name.isDerived) return draft.name.formatted;
  std::string composed;
  composeFullName({.last = draft.values.text(property_id::kLast),
                   .first = draft.values.text(property_id::kFirst)},
                  composed);
  return composed;
}

}  // namespace

bool readName(const PropertyRow& /*row*/, const ContentLine& line, CardDraft& draft) {
  if (isPhonetic(line)) return readPhonetic(line, draft);
  if (draft.name.hasParts) return false;
  // A group may be called by blanks alone.
  constexpr std::size_t kAll = kComponents + 1;
  const auto components =
      draft.facts.isGroup ? wholeComponents<kAll>(line.value) : vcard::components<kAll>(line.value);
  for (std::size_t i = 0; i < kParts.size(); ++i) {
    auto part = unescapedList(components[i], draft.facts.dialect, kParts[i].separator);
    // Control characters alone are no name, nor are blanks beside them, but for a group.
    const CardText clean(part);
    const auto written = draft.facts.isGroup ? clean.view() : trimmed(clean.view());
    if (written.empty()) continue;
    draft.values.text(kParts[i].property) = std::move(part);
    draft.name.hasParts = true;
  }
  const bool allTaken = areBlank(components.back());
  if (!allTaken) draft.repaired(line, "N has more than seven components, kept as text beside them");
  const bool hasMore =
      !areBlank(components[kParts.size()]) || !areBlank(components[kParts.size() + 1]);
  if (!draft.facts.isGroup && (hasMore || hasList(line.value, draft.facts.dialect))) {
    const auto count = hasMore ? kComponents : kParts.size();
    draft.name.verbatimParts =
        canonicalComponents(std::span(components).first(count), draft.facts.dialect);
    draft.preserveVerbatim(property_id::kLast, draft.name.verbatimParts);
  }
  const bool mayGiveReadings =
      !hasReadings(draft.values) || givesReadings(draft.name) || givesHeldReadings(line, draft);
  draft.name.details.clear();  // of an N before it that named nobody
  draft.name.partsLine.clear();
  if (draft.facts.isGroup && draft.name.hasParts && allTaken) {
    appendPreserved(line, draft.facts.dialect, draft.name.partsLine);
  }
  if (line.parameters.empty()) return allTaken;
  auto& details = draft.unmodelled.details;
  const auto first = static_cast<std::ptrdiff_t>(details.size());
  if (mayGiveReadings) {
    readSortAs(line, draft);
  } else if (line.find(ParameterKind::SortAs) != nullptr) {
    draft.repaired(line, "SORT-AS of N left out beside the readings of the name");
  }
  draft.preserveParameters(property_id::kLast, line, bitOf(ParameterKind::SortAs));
  draft.name.details.assign(std::make_move_iterator(details.begin() + first),
                            std::make_move_iterator(details.end()));
  details.erase(details.begin() + first, details.end());
  return allTaken;
}

// SOUND;X-IRMC-N holds the reading of N.
bool readSound(const PropertyRow& /*row*/, const ContentLine& line, CardDraft& draft) {
  if (line.encoding == Encoding::Base64 || !hasReadingType(line)) return false;
  auto& values = draft.values;
  if (hasReadings(values)) return false;
  const auto parts = components<5>(line.value);
  values.text(property_id::kLastPhonetic) = unescaped(parts[0]);
  values.text(property_id::kFirstPhonetic) = unescaped(parts[1]);
  values.text(property_id::kMiddlePhonetic) = unescaped(parts[2]);
  return true;
}

void settleName(CardDraft& draft) {
  auto& name = draft.name;
  auto& values = draft.values;
  if (!name.hasParts && !name.isDerived && !isCompanyName(draft)) {
    const auto parts = partsOfFullName(name.formatted);
    values.text(property_id::kFirst) = parts.first;
    values.text(property_id::kLast) = parts.last;
  }
  const auto parts = partsHeldBy(values);
  std::string composed;
  composeFullName(parts, composed);
  // N is written without control characters.
  const bool isCovered = name.formatted.empty() || name.formatted == composed ||
                         name.formatted == CardText(composed).view() ||
                         (composed.empty() && (name.isDerived || isCompanyName(draft)));
  if (isCovered && !name.isRepeated) return;
  // A writer takes the first one for the one that counts.
  auto& lines = draft.unmodelled.lines;
  if (!name.formatted.empty()) lines.insert(lines.begin(), name.formattedLine);
  // What FN says counts as long as the name is the one that came with it.
  if (name.verbatimParts.empty()) {
    draft.preserveVerbatim(property_id::kLast, valueOfUncleanName(parts));
  }
}

std::string settleGroupName(CardDraft& draft) {
  auto name = groupNameOf(draft);
  if (draft.name.partsLine.empty()) return name;
  std::string composed;
  composeFullName(partsHeldBy(draft.values), composed);
  // A record has one name: what N says beside it stays with its line.
  if (trimmed(CardText(composed).view()) != trimmed(CardText(name).view())) {
    draft.unmodelled.lines.push_back(std::move(draft.name.partsLine));
  }
  return name;
}

void writeName(const PropertyRow& /*row*/, PropertyWriter& card) {
  const auto parts = partsHeldBy(card);
  writeParts(parts, card);
  writeFormattedName(parts, card);
}

// FN that is only blanks calls nobody anything: N has to say them then.
GroupNameLines groupNameLines(const PropertyWriter& card) {
  const auto* name = card.properties().text(property_id::kGroupName);
  const CardText text(name != nullptr ? std::string_view(*name) : std::string_view());
  const bool isBlank = trimmed(text.view()).empty();
  return {.hasN = card.is30() || (isBlank && !text.view().empty()), .isFormatted = !isBlank};
}

void writeGroupName(PropertyWriter& card) {
  const auto* name = card.properties().text(property_id::kGroupName);
  const CardText text(name != nullptr ? std::string_view(*name) : std::string_view());
  const auto lines = groupNameLines(card);
  if (lines.hasN) {
    card.line().raw("N");
    card.writeParameters(property_id::kLast);
    card.line().raw(":").text(text.view()).raw(";;;;").end();
  }
  if (!lines.isFormatted) {
    card.line().raw(card.is30() ? "FN;X-DERIVED=TRUE:?" : "FN;DERIVED=TRUE:?").end();
    return;
  }
  card.line().raw("FN");
  card.writeParameters(property_id::kGroupName);
  card.line().raw(":").text(text.view()).end();
}

// A second N, in another script for one.
bool lacksName(const PropertyRow& /*row*/, std::string_view line, PropertyWriter& card) {
  ContentLine name;
  if (parseHead(line, name) == std::string_view::npos) return true;
  if (!isPhonetic(name)) return isEmpty(partsHeldBy(card));
  return card.textOf(property_id::kLastPhonetic).empty() &&
         card.textOf(property_id::kFirstPhonetic).empty();
}

bool lacksReadings(const PropertyRow& /*row*/, std::string_view line, PropertyWriter& card) {
  if (!card.textOf(property_id::kLastPhonetic).empty()) return false;
  if (!card.textOf(property_id::kFirstPhonetic).empty()) return false;
  ContentLine sound;
  return parseHead(line, sound) != std::string_view::npos && hasReadingType(sound);
}

}  // namespace ox::vcard
