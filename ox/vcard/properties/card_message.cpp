#include <array>
#include <utility>

#include "ox/base/text/utf8.hpp"
#include "ox/records/property_keys.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/uri.hpp"
#include "ox/vcard/properties/dictionary_texts.hpp"
#include "ox/vcard/properties/each_property.hpp"
#include "ox/vcard/properties/original_line.hpp"

// Accounts at services of instant messages: IMPP (RFC 4770), whose URI has the scheme of the
// service, and the X- properties of older programs, one a service.

namespace ox::vcard {
namespace {

// The scheme of accounts at a service that has none of its own.
constexpr std::string_view kAnyService = "X-APPLE";

struct ServiceRow {
  std::string_view text;  // upper case: a scheme of IMPP, or how programs name the service
  std::string_view service;
};

constexpr std::array kServices = {
    ServiceRow{"AIM", kABInstantMessageServiceAIM},
    ServiceRow{"FACEBOOK", kABInstantMessageServiceFacebook},
    ServiceRow{"FB", kABInstantMessageServiceFacebook},
    ServiceRow{"GADUGADU", kABInstantMessageServiceGaduGadu},
    ServiceRow{"GADU-GADU", kABInstantMessageServiceGaduGadu},
    ServiceRow{"GG", kABInstantMessageServiceGaduGadu},
    ServiceRow{"GTALK", kABInstantMessageServiceGoogleTalk},
    ServiceRow{"GOOGLETALK", kABInstantMessageServiceGoogleTalk},
    ServiceRow{"GOOGLE TALK", kABInstantMessageServiceGoogleTalk},
    ServiceRow{"ICQ", kABInstantMessageServiceICQ},
    ServiceRow{"XMPP", kABInstantMessageServiceJabber},
    ServiceRow{"JABBER", kABInstantMessageServiceJabber},
    ServiceRow{"MSN", kABInstantMessageServiceMSN},
    ServiceRow{"MSNIM", kABInstantMessageServiceMSN},
    ServiceRow{"QQ", kABInstantMessageServiceQQ},
    ServiceRow{"MQQ", kABInstantMessageServiceQQ},
    ServiceRow{"SKYPE", kABInstantMessageServiceSkype},
    ServiceRow{"YMSGR", kABInstantMessageServiceYahoo},
    ServiceRow{"YAHOO", kABInstantMessageServiceYahoo},
};

// A service that is known by no other name.
constexpr std::string_view kSip = "SIP";

struct SchemeRow {
  std::string_view service;
  std::string_view scheme;
};

// Two of the services are reached by the protocol of another.
constexpr std::array kSchemes = {
    SchemeRow{kABInstantMessageServiceAIM, "aim"},
    SchemeRow{kABInstantMessageServiceFacebook, "xmpp"},
    SchemeRow{kABInstantMessageServiceGaduGadu, "gg"},
    SchemeRow{kABInstantMessageServiceGoogleTalk, "xmpp"},
    SchemeRow{kABInstantMessageServiceICQ, "icq"},
    SchemeRow{kABInstantMessageServiceJabber, "xmpp"},
    SchemeRow{kABInstantMessageServiceMSN, "msnim"},
    SchemeRow{kABInstantMessageServiceQQ, "mqq"},
    SchemeRow{kABInstantMessageServiceSkype, "skype"},
    SchemeRow{kSip, "sip"},
    SchemeRow{kABInstantMessageServiceYahoo, "ymsgr"},
};

// An account at a service; both empty when they are not there.
struct Account {
  std::string user;
  std::string service;

  bool operator==(const Account&) const = default;
};

enum MessageKey : std::size_t { kUser, kService };
constexpr std::array kKeys = {kABInstantMessageUsernameKey, kABInstantMessageServiceKey};

// The service's name in the store for a scheme or for how programs name it, in any case; empty when
// the text names no service that has a constant.
std::string_view knownService(std::string_view text) {
  for (const auto& row : kServices) {
    if (isWord(text, row.text)) return row.service;
  }
  return {};
}

// In lower case, as a URI has it.
std::string_view schemeOfService(std::string_view service) {
  for (const auto& row : kSchemes) {
    if (row.service == service) return row.scheme;
  }
  return "x-apple";
}

// What X-SERVICE-TYPE says, which tells the service more exactly than a scheme or the name of the
// line; empty without that parameter.
std::string serviceType(const ContentLine& line) {
  const auto* parameter = line.find(ParameterKind::ServiceType);
  return parameter != nullptr ? parameterText(*parameter) : std::string();
}

// The service of that name, which need not be one that is known.
std::string_view serviceNamed(std::string_view name) {
  const auto known = knownService(name);
  return known.empty() ? name : known;
}

// The account that a value of IMPP means. `named` is what X-SERVICE-TYPE says.
Account accountOfUri(std::string_view uri, std::string_view named) {
  const auto scheme = schemeOf(uri);
  auto service = knownService(scheme);
  bool isScheme = !service.empty() || isWord(scheme, kAnyService);
  if (!named.empty()) {
    std::string upperName(named);
    for (auto& c : upperName) c = upper(c);
    isScheme |= isWord(scheme, upperName);
    service = serviceNamed(named);
  }
  if (isScheme && !scheme.empty()) uri.remove_prefix(scheme.size() + 1);
  return {validUtf8(percentDecoded(uri)), std::string(service)};
}

std::string uriOfAccount(const Account& account) {
  // A URI of a scheme that no service stands for is the user's name as a whole.
  if (account.service.empty() && isUri(account.user) && accountOfUri(account.user, {}) == account) {
    return account.user;
  }
  std::string uri(schemeOfService(account.service));
  uri += ':';
  appendPercentEncoded(account.user, uri);
  return uri;
}

Dictionary dictionaryOf(std::string user, std::string_view service) {
  Dictionary dictionary;
  dictionary.reserve(2);
  dictionary.set(kKeys[kUser], std::move(user));
  if (!service.empty()) dictionary.set(kKeys[kService], service);
  return dictionary;
}

}  // namespace

bool readMessageUser(const PropertyRow& row, const ContentLine& line, CardDraft& draft) {
  constexpr std::string_view kSipScheme = "SIP:";
  auto user = draft.text(line);
  // The address of a telephone is a URI or what follows its scheme.
  if (row.implied == kSip && startsWithWord(user, kSipScheme)) user.erase(0, kSipScheme.size());
  if (trimmed(user).empty()) return true;
  const auto named = serviceType(line);
  draft.addEntry(row.property,
                 dictionaryOf(std::move(user), named.empty() ? row.implied : serviceNamed(named)),
                 line, {.ownKinds = bitOf(ParameterKind::ServiceType)});
  return true;
}

bool readMessageUri(const PropertyRow& row, const ContentLine& line, CardDraft& draft) {
  const auto given = draft.text(line);
  const auto uri = trimmed(given);
  if (uri.empty()) return true;
  auto held = accountOfUri(uri, serviceType(line));
  const bool isOurs = !isUri(uri) || uriOfAccount(held) == uri;
  draft.addEntry(row.property, dictionaryOf(std::move(held.user), held.service), line,
                 {.ownKinds = bitOf(ParameterKind::ServiceType)});
  if (!isOurs) draft.preserveVerbatim(row.property, uri);
  // RFC 9554, section 4.9: what we write as X-SERVICE-TYPE.
  const auto* type = line.find(ParameterKind::ServiceType);
  if (type != nullptr && isWord(type->name, "SERVICE-TYPE")) {
    preserveOriginalLine(row.property, line, draft, LineHolds::Other);
  }
  return true;
}

bool writeMessage(EntryWriter& entry) {
  const auto* dictionary = entry.value().dictionary();
  if (dictionary == nullptr) return false;
  const DictionaryTexts<kKeys.size()> texts(*dictionary, kKeys);
  const auto service = texts[kService];
  const auto known = knownService(service);
  entry.start("IMPP");
  const CardText name(service);
  if (!name.view().empty()) entry.line().parameter("X-SERVICE-TYPE", name.view());
  const Account account{std::string(texts[kUser]), std::string(name.view())};
  const bool isVerbatim =
      !entry.verbatim().empty() && accountOfUri(entry.verbatim(), name.view()) == account;
  entry.line().raw(":");
  if (isVerbatim) {
    entry.line().uri(entry.verbatim());
  } else {
    entry.line().uri(uriOfAccount(account));
  }
  entry.end();
  return texts.isExact() && texts.has(kUser) &&
         (!texts.has(kService) || (isPlain(service) && (known.empty() || known == service)));
}

}  // namespace ox::vcard
