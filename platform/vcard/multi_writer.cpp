#include <algorithm>
#include <array>

#include "platform/records/property_keys.hpp"
#include "platform/vcard/ascii.hpp"
#include "platform/vcard/card.hpp"
#include "platform/vcard/card_date.hpp"
#include "platform/vcard/card_writer.hpp"
#include "platform/vcard/content_line.hpp"
#include "platform/vcard/services.hpp"
#include "platform/vcard/spelling.hpp"
#include "platform/vcard/type_words.hpp"
#include "platform/vcard/uri.hpp"

// The lines of multi-values, one an entry. Each function is false when its line does not give the
// entry exactly.

namespace ox::vcard {
namespace {

constexpr std::uint32_t kAlwaysUnderstood = type_word::kVoice | type_word::kInternet;

// The texts of a dictionary under known keys.
template <std::size_t N>
class Texts {
 public:
  Texts(const Dictionary& dictionary, const std::array<std::string_view, N>& keys) : keys_(keys) {
    for (const auto& [key, value] : dictionary.entries()) {
      const auto found = std::find(keys.begin(), keys.end(), key);
      const auto* text = value.text();
      if (found == keys.end() || text == nullptr) {
        isExact_ = false;
      } else {
        texts_[static_cast<std::size_t>(found - keys.begin())] = text;
      }
    }
  }

  // All values are texts under one of the keys.
  bool isExact() const { return isExact_; }
  bool has(std::string_view key) const { return at(key) != nullptr; }
  std::string_view operator[](std::string_view key) const {
    const auto* text = at(key);
    return text != nullptr ? std::string_view(*text) : std::string_view();
  }

 private:
  const std::string* at(std::string_view key) const {
    return texts_[static_cast<std::size_t>(std::find(keys_.begin(), keys_.end(), key) -
                                           keys_.begin())];
  }

  const std::array<std::string_view, N>& keys_;
  std::array<const std::string*, N> texts_{};
  bool isExact_ = true;
};

constexpr std::array kAddressKeys = {
    kABAddressStreetKey,  kABAddressCityKey,        kABAddressStateKey,       kABAddressZIPKey,
    kABAddressCountryKey, kABAddressCountryCodeKey, kAddressPostOfficeBoxKey, kAddressExtendedKey};
constexpr std::array kMessageKeys = {kABInstantMessageUsernameKey, kABInstantMessageServiceKey};
constexpr std::array kSocialKeys = {kABSocialProfileServiceKey, kABSocialProfileUsernameKey,
                                    kABSocialProfileURLKey, kABSocialProfileUserIdentifierKey};

// True when the text is there and reads back from a value or a parameter.
bool isPlain(std::string_view text) {
  return !text.empty() && !CardText(text).isChanged();
}

// Without the lines that the first components of ADR stand in; missing when it does not start so.
std::optional<std::string_view> streetAlone(std::string_view street, std::string_view box,
                                            std::string_view extended) {
  for (const auto part : {box, extended}) {
    if (part.empty()) continue;
    if (!street.starts_with(part)) return std::nullopt;
    street.remove_prefix(part.size());
    if (street.empty()) continue;
    if (street.front() != '\n') return std::nullopt;
    street.remove_prefix(1);
    if (street.empty()) return std::nullopt;
  }
  return street;
}

// The words of TYPE parameters that were kept.
TypeWords wordsOf(std::string_view parameters, std::string& head, ContentLine& line) {
  TypeWords words;
  head.assign("X").append(parameters) += ':';
  if (parseHead(head, line) != std::string_view::npos) readTypeWords(line, words);
  words.known &= ~kAlwaysUnderstood;
  return words;
}

// What a reader of RELATED makes of TYPE words that were kept.
struct KeptRelation {
  bool isPlain = true;      // there are none
  bool givesLabel = false;  // they say the label
  bool isSayable = true;    // label and words come back from RELATED
};

KeptRelation keptRelation(std::string_view parameters, const Text& label) {
  ContentLine line;
  std::string head;
  const auto words = wordsOf(parameters, head, line);
  if (words.known != 0) return {false, false, false};
  if (words.unknown.empty()) return {};
  std::string_view relation;
  for (const auto word : words.unknown) {
    if (relation.empty()) relation = relationLabel(word);
  }
  if (relation.empty()) return {false, false, true};
  return {false, label == relation, label && words.unknown.size() > 1};
}

bool isTypeWord(std::string_view word) {
  if (!isPlain(word) || word.find_first_of(",\"") != word.npos) return false;
  if (word.front() == ' ' || word.back() == ' ' || word.find('\n') != word.npos) return false;
  TypeWords words;
  ContentLine line;
  line.parameters.push_back({"TYPE", word, ParameterKind::Type});
  readTypeWords(line, words);
  return words.unknown.size() == 1;
}

}  // namespace

void CardWriter::multi(PropertyId property) {
  const auto* value = values_[property];
  if (value == nullptr) return;
  const auto* values = std::get_if<MultiValuePtr>(value);
  if (values == nullptr || (*values)->entries.empty()) return notExact(property);
  const bool ranked = kept_.hasRanks() && ranksHold(**values, property);
  bool allWritten = true;
  std::size_t number = 0;
  for (const auto& held : (*values)->entries) {
    ++number;
    Entry next{property, &held, held.identifier == (*values)->primary ? 1U : 0U, {}};
    if (const auto rank = ranked ? kept_.rankOf(property, held.identifier) : 0; rank != 0) {
      // TYPE knows no ranks.
      const bool isSayable = allWritten && (rank == 1 || !is30());
      if (isSayable) next.rank = rank;
      if (!isSayable) wrapDetail(property, number, ";PREF=", std::to_string(rank));
    }
    for (const auto& kept : kept_.parametersOf(property, held.identifier)) {
      // A reader counts the entries that it finds.
      if (allWritten && areAdmitted(kept.said, options_.version)) {
        next.kept.append(kept.said);
      } else {
        entryParameters_.push_back(KeptDetail{property, number, kept.said}.text());
      }
    }
    if (allWritten) {
      next.spelling = kept_.spellingOf(property, held.identifier);
      next.group = kept_.groupOf(property, held.identifier);
    } else {
      wrapDetail(property, number, ":", kept_.spellingOf(property, held.identifier));
      wrapDetail(property, number, ".", kept_.groupOf(property, held.identifier));
    }
    const auto size = out_.size();
    if (!entry(next)) notExact(property);
    if (held.label && !isPlain(*held.label)) notExact(property);
    allWritten &= out_.size() > size;
  }
}

// True when the ranks that were kept make the entry primary that is it now.
bool CardWriter::ranksHold(const MultiValue& values, PropertyId property) const {
  unsigned best = 0;
  std::uint64_t first = 0;
  for (const auto& held : values.entries) {
    auto rank = kept_.rankOf(property, held.identifier);
    if (rank == 0 && held.identifier == values.primary) rank = 1;
    if (rank == 0 || (best != 0 && rank >= best)) continue;
    best = rank;
    first = held.identifier;
  }
  return first == values.primary;
}

void CardWriter::preference(unsigned rank) {
  if (rank == 0) return;
  if (is30()) {
    line_.raw(";TYPE=pref");
  } else {
    line_.raw(";PREF=").number(rank);
  }
}

// For a line of its own.
void CardWriter::wrapDetail(PropertyId property, std::size_t entry, std::string_view mark,
                            std::string_view detail) {
  if (detail.empty()) return;
  const auto said = std::string(mark).append(detail);
  entryParameters_.push_back(KeptDetail{property, entry, said}.text());
}

bool CardWriter::entry(const Entry& entry) {
  switch (entry.property) {
    case property_id::kPhone:
      return simple(entry, "TEL", "TEL:");
    case property_id::kEmail:
      return simple(entry, "EMAIL", "MAILTO:");
    case property_id::kURLs:
      return simple(entry, "URL", {});
    case property_id::kInstantMessage:
      return message(entry);
    case property_id::kSocialProfile:
      return socialProfile(entry);
    case property_id::kAddress:
      return address(entry);
    case property_id::kRelatedNames:
      return related(entry);
    default:
      return date(entry);
  }
}

CardWriter::Head CardWriter::startEntry(const Entry& entry, std::string_view name, bool forceItem,
                                        bool labelled) {
  Head head;
  std::string_view parameters;
  const auto& label = entry.held->label;
  if (label && !labelled) {
    const bool typed =
        entry.property != property_id::kRelatedNames && entry.property != property_id::kOtherDates;
    const auto byType =
        typed ? labelParameters(entry.property, *label, !is30()) : LabelParameters{};
    parameters = byType.parameters;
    if (!entry.kept.empty() && byType.words != 0) {
      // Words that were kept may make another label of it.
      ContentLine line;
      std::string text;
      const auto keptWords = wordsOf(entry.kept, text, line).known;
      const auto all = keptWords | byType.words;
      const auto read = typeLabel(entry.property, all);
      if (read.label != *label || (all & ~read.used) != keptWords) parameters = {};
    }
    if (parameters.empty()) head.label = *label;
  }
  head.group = groupFor(entry, head.label, forceItem);
  if (!head.group.empty()) line_.raw(head.group).raw(".");
  line_.raw(name).raw(parameters);
  preference(entry.rank);
  line_.raw(entry.kept);
  return head;
}

// The group of an entry's line. A kept one is shared only by entries that have the same label: it
// holds for all of them, and is taken away here when it stands there already.
std::string CardWriter::groupFor(const Entry& entry, std::string_view& label, bool forceItem) {
  if (!entry.group.empty()) {
    const auto [taken, isFirst] =
        takenGroups_.try_emplace(groupKey(entry.group), TakenGroup{label, forceItem});
    if (isFirst) return std::string(entry.group);
    if (taken->second.label == label && !taken->second.isClosed && !forceItem) {
      label = {};
      return std::string(entry.group);
    }
  }
  if (label.empty() && !forceItem) return {};
  return "item" + std::to_string(nextItem_++);
}

void CardWriter::endEntry(const Entry& entry, const Head& head) {
  line_.end();
  if (head.label.empty()) return;
  const CardText label(*entry.held->label);
  if (label.view().empty()) return;
  line_.raw(head.group).raw(".X-ABLabel:").text(label.view()).end();
}

bool CardWriter::simple(const Entry& entry, std::string_view name, std::string_view scheme) {
  const auto* value = entry.held->value.text();
  if (value == nullptr) return false;
  const CardText text(*value);
  // What a reader takes for the value.
  auto bare = trimmed(text.view());
  if (!scheme.empty() && startsWithWord(bare, scheme)) bare.remove_prefix(scheme.size());
  if (bare.empty()) return false;
  const auto head = startEntry(entry, name);
  line_.raw(":");
  if (entry.property == property_id::kURLs) {
    line_.uri(text.view());
  } else {
    line_.text(text.view());
  }
  endEntry(entry, head);
  return !text.isChanged() && bare.size() == value->size();
}

bool CardWriter::date(const Entry& entry) {
  const auto* date = entry.held->value.as<Date>();
  const auto spelling = date != nullptr ? spellCardDate(*date, !is30()) : std::nullopt;
  if (!spelling) return false;
  const bool anniversary =
      !is30() && !anniversaryWritten_ && entry.held->label == Text(kABAnniversaryLabel);
  anniversaryWritten_ |= anniversary;
  const auto head = startEntry(entry, anniversary ? "ANNIVERSARY" : "X-ABDATE", false, anniversary);
  line_.raw(spelling->omitsYear ? ";X-APPLE-OMIT-YEAR=1604:" : ":").raw(spelling->text);
  endEntry(entry, head);
  return spelling->isExact;
}

bool CardWriter::address(const Entry& entry) {
  const auto* dictionary = entry.held->value.dictionary();
  if (dictionary == nullptr) return false;
  const Texts<kAddressKeys.size()> parts(*dictionary, kAddressKeys);
  bool exact = parts.isExact();
  for (const auto key : kAddressKeys) exact &= !parts.has(key) || isPlain(parts[key]);
  const auto box = parts[kAddressPostOfficeBoxKey];
  const auto extended = parts[kAddressExtendedKey];
  const auto street = streetAlone(parts[kABAddressStreetKey], box, extended);
  exact &= street.has_value();
  // In the order of RFC 6350, section 6.3.1.
  const std::array<std::string_view, 7> components = {street ? box : std::string_view(),
                                                      street ? extended : std::string_view(),
                                                      street.value_or(parts[kABAddressStreetKey]),
                                                      parts[kABAddressCityKey],
                                                      parts[kABAddressStateKey],
                                                      parts[kABAddressZIPKey],
                                                      parts[kABAddressCountryKey]};
  const auto saysNothing = [](std::string_view part) { return CardText(part).view().empty(); };
  if (std::all_of(components.begin(), components.end(), saysNothing)) return false;

  const auto code = parts[kABAddressCountryCodeKey];
  const bool hasCode = code.size() == 2 && isLetter(code[0]) && isLetter(code[1]);
  const auto head = startEntry(entry, "ADR", hasCode);
  if (!entry.spelling.empty() && isAddressSpelling(entry.spelling, components)) {
    line_.raw(":").raw(entry.spelling);
  } else {
    std::string_view separator = ":";
    for (const auto component : components) {
      line_.raw(separator).text(CardText(component).view());
      separator = ";";
    }
  }
  endEntry(entry, head);
  if (hasCode) line_.raw(head.group).raw(".X-ABADR:").raw(code).end();
  return exact && (hasCode || code.empty());
}

bool CardWriter::message(const Entry& entry) {
  const auto* dictionary = entry.held->value.dictionary();
  if (dictionary == nullptr) return false;
  const Texts<kMessageKeys.size()> parts(*dictionary, kMessageKeys);
  const auto service = parts[kABInstantMessageServiceKey];
  const auto known = knownService(service);
  const auto head = startEntry(entry, "IMPP");
  const CardText name(service);
  if (!name.view().empty()) line_.parameter("X-SERVICE-TYPE", name.view());
  const Account account{std::string(parts[kABInstantMessageUsernameKey]), std::string(service)};
  const bool isSpelt =
      !entry.spelling.empty() && accountOfUri(entry.spelling, name.view()) == account;
  line_.raw(":").uri(isSpelt ? entry.spelling : uriOfAccount(account));
  endEntry(entry, head);
  return parts.isExact() && parts.has(kABInstantMessageUsernameKey) &&
         (!parts.has(kABInstantMessageServiceKey) ||
          (isPlain(service) && (known.empty() || known == service)));
}

bool CardWriter::socialProfile(const Entry& entry) {
  const auto* dictionary = entry.held->value.dictionary();
  if (dictionary == nullptr || dictionary->empty()) return false;
  const Texts<kSocialKeys.size()> parts(*dictionary, kSocialKeys);
  bool exact = parts.isExact();
  for (const auto key : kSocialKeys) exact &= !parts.has(key) || isPlain(parts[key]);
  const auto service = parts[kABSocialProfileServiceKey];
  const auto user = parts[kABSocialProfileUsernameKey];
  const auto identifier = parts[kABSocialProfileUserIdentifierKey];
  // That scheme stands for a profile without URL.
  const bool isUrl = !startsWithWord(parts[kABSocialProfileURLKey], "X-APPLE:");
  const CardText url(isUrl ? parts[kABSocialProfileURLKey] : std::string_view());
  const CardText identifierText(identifier);
  const bool named = isTypeWord(service);
  if (!named && user.empty() && identifierText.view().empty() && url.view().empty()) return false;
  const auto head = startEntry(entry, "X-SOCIALPROFILE");
  bool serviceKept = false;
  if (!entry.kept.empty()) {
    ContentLine line;
    std::string text;
    const auto words = wordsOf(entry.kept, text, line).unknown;
    serviceKept = words.size() > 1 && words.front() == service;
    exact &= serviceKept || words.empty();
  }
  if (named) {
    if (!serviceKept) {
      const bool quoted = service.find_first_of(":;= \t") != service.npos;
      line_.raw(quoted ? ";TYPE=\"" : ";TYPE=").raw(service).raw(quoted ? "\"" : "");
    }
  } else {
    exact &= service.empty();
  }
  const CardText userText(user);
  if (!userText.view().empty()) line_.parameter("X-USER", userText.view());
  if (!identifierText.view().empty()) line_.parameter("X-USERID", identifierText.view());
  line_.raw(":");
  if (url.view().empty()) {
    line_.raw("x-apple:").percent(user);
  } else {
    line_.uri(url.view());
  }
  endEntry(entry, head);
  return exact && isUrl;
}

bool CardWriter::related(const Entry& entry) {
  const auto* value = entry.held->value.text();
  if (value == nullptr) return false;
  const CardText text(*value);
  if (trimmed(text.view()).empty()) return false;
  const auto& label = entry.held->label;
  const auto word = label ? relationWord(*label) : std::string_view();
  const auto kept = entry.kept.empty() ? KeptRelation{} : keptRelation(entry.kept, label);
  const bool standard = !is30() && kept.isSayable;
  const bool typed = standard && !kept.givesLabel && kept.isPlain && !word.empty();
  const auto head = startEntry(entry, standard ? "RELATED;VALUE=text" : "X-ABRELATEDNAMES", false,
                               typed || (standard && kept.givesLabel));
  if (typed) line_.raw(";TYPE=").raw(word);
  line_.raw(":").text(text.view());
  endEntry(entry, head);
  return !text.isChanged();
}

}  // namespace ox::vcard
