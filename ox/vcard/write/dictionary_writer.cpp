#include <algorithm>
#include <array>
#include <optional>

#include "ox/records/property_keys.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/properties/services.hpp"
#include "ox/vcard/properties/spelling.hpp"
#include "ox/vcard/properties/type_words.hpp"
#include "ox/vcard/read/card.hpp"
#include "ox/vcard/write/card_writer.hpp"

// The lines of entries that are dictionaries: addresses, accounts and profiles. Each function is
// false when its line does not give the entry exactly.

namespace ox::vcard {
namespace {

// The texts of a dictionary under known keys.
template <std::size_t N>
class Texts {
 public:
  Texts(const Dictionary& dictionary, const std::array<std::string_view, N>& keys) {
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
  bool has(std::size_t key) const { return texts_[key] != nullptr; }
  // By the key's place among the keys; empty when there is none.
  std::string_view operator[](std::size_t key) const {
    return has(key) ? std::string_view(*texts_[key]) : std::string_view();
  }

 private:
  std::array<const std::string*, N> texts_{};
  bool isExact_ = true;
};

enum AddressPart : std::size_t { kStreet, kCity, kState, kZip, kCountry, kCode, kBox, kExtended };
constexpr std::array kAddressKeys = {
    kABAddressStreetKey,  kABAddressCityKey,        kABAddressStateKey,       kABAddressZIPKey,
    kABAddressCountryKey, kABAddressCountryCodeKey, kAddressPostOfficeBoxKey, kAddressExtendedKey};

enum MessagePart : std::size_t { kMessageUser, kMessageService };
constexpr std::array kMessageKeys = {kABInstantMessageUsernameKey, kABInstantMessageServiceKey};

enum SocialPart : std::size_t { kService, kUser, kUrl, kUserIdentifier };
constexpr std::array kSocialKeys = {kABSocialProfileServiceKey, kABSocialProfileUsernameKey,
                                    kABSocialProfileURLKey, kABSocialProfileUserIdentifierKey};

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

bool CardWriter::address(const Entry& entry) {
  const auto* dictionary = entry.held->value.dictionary();
  if (dictionary == nullptr) return false;
  const Texts<kAddressKeys.size()> parts(*dictionary, kAddressKeys);
  bool exact = parts.isExact();
  for (std::size_t key = 0; key < kAddressKeys.size(); ++key) {
    exact &= !parts.has(key) || isPlain(parts[key]);
  }
  const auto box = parts[kBox];
  const auto extended = parts[kExtended];
  const auto street = streetAlone(parts[kStreet], box, extended);
  exact &= street.has_value();
  // In the order of RFC 6350, section 6.3.1.
  const std::array<std::string_view, 7> components = {street ? box : std::string_view(),
                                                      street ? extended : std::string_view(),
                                                      street.value_or(parts[kStreet]),
                                                      parts[kCity],
                                                      parts[kState],
                                                      parts[kZip],
                                                      parts[kCountry]};
  const auto saysNothing = [](std::string_view part) { return CardText(part).view().empty(); };
  if (std::all_of(components.begin(), components.end(), saysNothing)) return false;

  const auto code = parts[kCode];
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
  const auto service = parts[kMessageService];
  const auto known = knownService(service);
  const auto head = startEntry(entry, "IMPP");
  const CardText name(service);
  if (!name.view().empty()) line_.parameter("X-SERVICE-TYPE", name.view());
  const Account account{std::string(parts[kMessageUser]), std::string(service)};
  const bool isSpelt =
      !entry.spelling.empty() && accountOfUri(entry.spelling, name.view()) == account;
  line_.raw(":").uri(isSpelt ? entry.spelling : uriOfAccount(account));
  endEntry(entry, head);
  return parts.isExact() && parts.has(kMessageUser) &&
         (!parts.has(kMessageService) || (isPlain(service) && (known.empty() || known == service)));
}

bool CardWriter::socialProfile(const Entry& entry) {
  const auto* dictionary = entry.held->value.dictionary();
  if (dictionary == nullptr || dictionary->empty()) return false;
  const Texts<kSocialKeys.size()> parts(*dictionary, kSocialKeys);
  bool exact = parts.isExact();
  for (std::size_t key = 0; key < kSocialKeys.size(); ++key) {
    exact &= !parts.has(key) || isPlain(parts[key]);
  }
  const auto service = parts[kService];
  const auto user = parts[kUser];
  const auto identifier = parts[kUserIdentifier];
  // That scheme stands for a profile without URL.
  const bool isUrl = !startsWithWord(parts[kUrl], "X-APPLE:");
  const CardText url(isUrl ? parts[kUrl] : std::string_view());
  const CardText identifierText(identifier);
  const bool named = isTypeWord(service);
  if (!named && user.empty() && identifierText.view().empty() && url.view().empty()) return false;
  const auto head = startEntry(entry, "X-SOCIALPROFILE");
  bool serviceKept = false;
  if (!entry.kept.empty()) {
    ContentLine line;
    std::string text;
    const auto words = keptTypeWords(entry.kept, text, line).unknown;
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

}  // namespace ox::vcard
