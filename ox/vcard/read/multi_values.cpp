#include <string>
#include <utility>

#include "ox/base/text/utf8.hpp"
#include "ox/records/property_keys.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/decode.hpp"
#include "ox/vcard/lines/uri.hpp"
#include "ox/vcard/properties/services.hpp"
#include "ox/vcard/properties/spelling.hpp"
#include "ox/vcard/read/card_builder.hpp"
#include "ox/vcard/unmodelled/kept_lines.hpp"

// The lines of a card that become entries of a multi-value. Every function is false when the line
// has to be kept as it is.

namespace ox::vcard {
namespace {

Dictionary account(std::string user, std::string_view service) {
  Dictionary dictionary;
  dictionary.reserve(2);
  dictionary.set(kABInstantMessageUsernameKey, std::move(user));
  if (!service.empty()) dictionary.set(kABInstantMessageServiceKey, service);
  return dictionary;
}

bool saysText(const ContentLine& line) {
  const auto* value = line.find(ParameterKind::Value);
  return value != nullptr && isWord(value->value, "TEXT");
}

}  // namespace

void CardBuilder::addEntry(PropertyId property, Object&& value, const ContentLine& line,
                           EntryExtras extras) {
  auto& held = multi(property);
  const std::size_t number = held.entries.size() + 1;
  const auto keptBefore = unmodelled_.size();
  TypeLabel label;
  if (!line.parameters.empty()) {
    readTypeWords(line, types_);
    label = typeLabel(property, types_.known);
    if (!extras.label.empty()) label = {extras.label, 0};
    if (types_.rank != 0) held.ranks.emplace_back(number, types_.rank);
    if (types_.rank != 0 && (held.rank == 0 || types_.rank < held.rank)) {
      held.rank = types_.rank;
      held.primary = number;
    }
    keepParameters(property, number, line, extras.ownKinds, types_.known & ~label.used,
                   !extras.unknownWordsUsed);
  } else {
    label.label = extras.label;
  }
  if (number == 1) held.entries.reserve(4);
  held.entries.push_back({number, std::nullopt, std::move(value)});
  if (!label.label.empty()) held.entries.back().label.emplace(label.label);
  if (line.group.empty()) return;
  const auto parameters = unmodelled_.size() > keptBefore ? keptBefore : kNone;
  grouped_.push_back(
      {groupKey(line.group), std::string(line.group), property, number, label.used, parameters});
}

// Keeps how the card spelt the value of the last entry.
void CardBuilder::keepSpelling(PropertyId property, std::string_view spelling) {
  const auto said = std::string(":").append(spelling);
  const auto entry = property < kFirstMulti ? 0 : multi(property).entries.size();
  unmodelled_.emplace_back(KeptDetail{property, entry, said}.text());
}

// Keeps what neither the value nor the label holds.
void CardBuilder::keepParameters(PropertyId property, std::size_t entry, const ContentLine& line,
                                 std::uint32_t ownKinds, std::uint32_t typeWords,
                                 bool unknownWords) {
  if (line.parameters.empty()) return;
  if (entry == 0) {
    readTypeWords(line, types_);
    typeWords = types_.known;
  }
  collectParameters(line, ownKinds, typeWords, unknownWords);
  if (!scratch_.empty()) {
    unmodelled_.emplace_back(KeptDetail{property, entry, scratch_}.text());
  }
  if (entry == 0 && types_.rank != 0) keepRank(property, 0, types_.rank);
}

void CardBuilder::keepRank(PropertyId property, std::size_t entry, unsigned rank) {
  const auto said = ";PREF=" + std::to_string(rank);
  unmodelled_.emplace_back(KeptDetail{property, entry, said}.text());
}

// Ranks beside that of the primary entry, which is 1 unless something else is said.
void CardBuilder::keepRanks() {
  for (PropertyId id = kFirstMulti; id < kFirstMulti + kMultiCount; ++id) {
    const auto& held = multi(id);
    for (const auto& [entry, rank] : held.ranks) {
      if (entry != held.primary || rank != 1) keepRank(id, entry, rank);
    }
  }
}

// Replaces the scratch text by the parameters to keep; the type words are those of the line.
void CardBuilder::collectParameters(const ContentLine& line, std::uint32_t ownKinds,
                                    std::uint32_t typeWords, bool unknownWords) {
  constexpr std::uint32_t kAlways = bitOf(ParameterKind::Type) | bitOf(ParameterKind::Pref) |
                                    bitOf(ParameterKind::Encoding) | bitOf(ParameterKind::Charset) |
                                    bitOf(ParameterKind::Value);
  scratch_.clear();
  // These two are understood of a phone and of an e-mail address.
  typeWords &= ~(type_word::kVoice | type_word::kInternet);
  for (std::uint32_t bit = 1; bit <= typeWords; bit <<= 1U) {
    if ((typeWords & bit) != 0) scratch_.append(";TYPE=").append(typeWordText(bit));
  }
  if (unknownWords) {
    for (const auto word : types_.unknown) scratch_.append(";TYPE=").append(word);
  }
  for (const auto& parameter : line.parameters) {
    if (((kAlways | ownKinds) & bitOf(parameter.kind)) != 0) continue;
    scratch_.append(";").append(parameter.name).append("=").append(parameter.value);
  }
}

// A phone, an e-mail address or a URL; the scheme goes that a URI value has in front of it.
bool CardBuilder::addSimple(PropertyId property, const ContentLine& line, std::string_view scheme) {
  Object value = text(line);
  const auto& whole = *value.text();
  auto bare = trimmed(whole);
  if (!scheme.empty() && startsWithWord(bare, scheme)) bare.remove_prefix(scheme.size());
  if (bare.empty()) return true;
  if (bare.size() != whole.size()) value = std::string(bare);
  addEntry(property, std::move(value), line, {});
  return true;
}

bool CardBuilder::addDate(const ContentLine& line) {
  if (trimmed(line.value).empty()) return true;
  const auto date = readDate(line);
  if (!date) return false;
  addEntry(property_id::kOtherDates, *date, line,
           {.label = line.row->argument, .ownKinds = bitOf(ParameterKind::OmittedYear)});
  return true;
}

bool CardBuilder::addAddress(const ContentLine& line) {
  const auto parts = components<7>(line.value);
  Dictionary address;
  address.reserve(parts.size() + 1);
  const auto put = [&](std::string_view key, std::string_view part) {
    if (!part.empty()) address.set(key, unescaped(part, dialect_));
  };
  if (parts[0].empty() && parts[1].empty()) {
    put(kABAddressStreetKey, parts[2]);
  } else {
    std::string street;
    for (const auto part : {parts[0], parts[1], parts[2]}) {
      if (part.empty()) continue;
      if (!street.empty()) street += '\n';
      street += unescaped(part, dialect_);
    }
    address.set(kABAddressStreetKey, std::move(street));
  }
  put(kABAddressCityKey, parts[3]);
  put(kABAddressStateKey, parts[4]);
  put(kABAddressZIPKey, parts[5]);
  put(kABAddressCountryKey, parts[6]);
  put(kAddressPostOfficeBoxKey, parts[0]);
  put(kAddressExtendedKey, parts[1]);
  if (address.empty()) return true;
  addEntry(property_id::kAddress, std::move(address), line, {});
  if (hasList(line.value, dialect_)) {
    keepSpelling(property_id::kAddress, structureSpelling(parts, dialect_));
  }
  return true;
}

bool CardBuilder::addMessage(const ContentLine& line) {
  auto user = text(line);
  if (trimmed(user).empty()) return true;
  addEntry(property_id::kInstantMessage, account(std::move(user), line.row->argument), line, {});
  return true;
}

// RFC 4770: a URI of the service's scheme; X-SERVICE-TYPE names the service more exactly.
bool CardBuilder::addMessageUri(const ContentLine& line) {
  const auto given = text(line);
  const auto uri = trimmed(given);
  if (uri.empty()) return true;
  std::string named;
  if (const auto* parameter = line.find(ParameterKind::ServiceType)) {
    named = parameterText(*parameter);
  }
  auto held = accountOfUri(uri, named);
  const bool isSpelling = isUri(uri) && uriOfAccount(held) != uri;
  addEntry(property_id::kInstantMessage, account(std::move(held.user), held.service), line,
           {.ownKinds = bitOf(ParameterKind::ServiceType)});
  if (isSpelling) keepSpelling(property_id::kInstantMessage, uri);
  return true;
}

bool CardBuilder::addSocialProfile(const ContentLine& line) {
  auto url = text(line);
  readTypeWords(line, types_);
  const auto service = types_.unknown.empty() ? std::string_view() : types_.unknown.front();
  const bool oneService = types_.unknown.size() <= 1;
  std::string user;
  std::string identifier;
  if (const auto* given = line.find(ParameterKind::UserName)) user = parameterText(*given);
  if (const auto* given = line.find(ParameterKind::UserIdentifier)) {
    identifier = parameterText(*given);
  }
  if (startsWithWord(url, kAnyService) && url.size() > kAnyService.size() &&
      url[kAnyService.size()] == ':') {
    if (user.empty())
      user = validUtf8(percentDecoded(std::string_view(url).substr(kAnyService.size() + 1)));
    url.clear();
  }
  Dictionary profile;
  const auto put = [&](std::string_view key, std::string value) {
    if (!value.empty()) profile.set(key, std::move(value));
  };
  put(kABSocialProfileServiceKey, std::string(service));
  put(kABSocialProfileUsernameKey, std::move(user));
  put(kABSocialProfileURLKey, std::move(url));
  put(kABSocialProfileUserIdentifierKey, std::move(identifier));
  if (profile.empty()) return true;
  addEntry(property_id::kSocialProfile, std::move(profile), line,
           {.ownKinds = bitOf(ParameterKind::UserName) | bitOf(ParameterKind::UserIdentifier),
            .unknownWordsUsed = oneService});
  return true;
}

bool CardBuilder::addRelated(const ContentLine& line) {
  auto name = text(line);
  if (trimmed(name).empty()) return true;
  if (line.row->meaning == Meaning::Related) {
    addEntry(property_id::kRelatedNames, std::move(name), line, {.label = line.row->argument});
    return true;
  }
  // A reference to another card is no name: RFC 6350, section 6.6.6.
  if (!saysText(line) && isUri(trimmed(name))) return false;
  readTypeWords(line, types_);
  std::string_view label;
  for (const auto word : types_.unknown) {
    if (label.empty()) label = relationLabel(word);
  }
  addEntry(property_id::kRelatedNames, std::move(name), line,
           {.label = label, .unknownWordsUsed = types_.unknown.size() == 1 && !label.empty()});
  return true;
}

}  // namespace ox::vcard
