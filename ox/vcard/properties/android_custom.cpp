#include <array>
#include <charconv>
#include <string>
#include <utility>

#include "ox/records/property_keys.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/decode.hpp"
#include "ox/vcard/properties/card_date.hpp"
#include "ox/vcard/properties/each_property.hpp"
#include "ox/vcard/properties/original_line.hpp"

// X-ANDROID-CUSTOM: what telephones hold beside the properties of 2.1 and 3.0. Its components are a
// kind of data, the value, the number of its type, and the label where that number is 0.

namespace ox::vcard {
namespace {

constexpr std::size_t kParts = 5;
enum Part : std::size_t { kKind, kValue, kType, kCustomLabel };
using Parts = std::array<std::string, kParts>;

constexpr std::string_view kKindOfNickname = "VND.ANDROID.CURSOR.ITEM/NICKNAME";
constexpr std::string_view kKindOfEvent = "VND.ANDROID.CURSOR.ITEM/CONTACT_EVENT";
constexpr std::string_view kKindOfRelation = "VND.ANDROID.CURSOR.ITEM/RELATION";

// By their number.
constexpr std::array<std::string_view, 3> kEvents = {{{}, kABAnniversaryLabel, kABOtherLabel}};
constexpr std::array<std::string_view, 15> kRelations = {{{},
                                                          kABAssistantLabel,
                                                          kABBrotherLabel,
                                                          kABChildLabel,
                                                          "domestic partner",
                                                          kABFatherLabel,
                                                          kABFriendLabel,
                                                          kABManagerLabel,
                                                          kABMotherLabel,
                                                          kABParentLabel,
                                                          kABPartnerLabel,
                                                          "referred by",
                                                          "relative",
                                                          kABSisterLabel,
                                                          kABSpouseLabel}};

Parts partsOf(const ContentLine& line) {
  const auto raw = components<kParts>(line.value);
  Parts parts;
  for (std::size_t i = 0; i < kParts; ++i) parts[i] = unescaped(raw[i]);
  return parts;
}

// False for a number that is none of those.
template <typename Labels>
bool findLabel(const Parts& parts, const Labels& labels, std::string_view& label) {
  std::size_t type = 0;
  const auto& text = parts[kType];
  std::from_chars(text.data(), text.data() + text.size(), type);
  if (type >= labels.size()) return false;
  label = type == 0 ? std::string_view(parts[kCustomLabel]) : labels[type];
  return true;
}

bool readNickname(const Parts& parts, const ContentLine& line, CardDraft& draft) {
  auto& nickname = draft.values.text(property_id::kNickname);
  const auto repeats = nickname.empty() ? Repeats::No : Repeats::Yes;
  if (repeats == Repeats::Yes && nickname != parts[kValue]) return false;
  nickname = parts[kValue];
  preserveOriginalLine(property_id::kNickname, line, draft, LineHolds::Other, repeats);
  return true;
}

template <typename Value>
bool readEntry(PropertyId property, Value&& value, std::string_view label, const ContentLine& line,
               CardDraft& draft) {
  draft.addEntry(property, Object(std::forward<Value>(value)), line, {.label = label});
  preserveOriginalLine(property, line, draft, LineHolds::Other);
  return true;
}

}  // namespace

bool readAndroidCustom(const PropertyRow& /*row*/, const ContentLine& line, CardDraft& draft) {
  auto parts = partsOf(line);
  if (trimmed(parts[kValue]).empty()) return false;
  std::string_view label;
  if (isWord(parts[kKind], kKindOfNickname)) return readNickname(parts, line, draft);
  if (isWord(parts[kKind], kKindOfRelation) && findLabel(parts, kRelations, label)) {
    return readEntry(property_id::kRelatedNames, std::move(parts[kValue]), label, line, draft);
  }
  if (isWord(parts[kKind], kKindOfEvent) && findLabel(parts, kEvents, label)) {
    const auto date = readCardDate(parts[kValue], {});
    return date && readEntry(property_id::kOtherDates, date->date, label, line, draft);
  }
  return false;
}

}  // namespace ox::vcard
