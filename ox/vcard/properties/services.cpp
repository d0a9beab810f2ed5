#include "ox/vcard/properties/services.hpp"

#include <array>

#include "ox/base/text/utf8.hpp"
#include "ox/records/property_keys.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/uri.hpp"

namespace ox::vcard {
namespace {

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
    SchemeRow{kABInstantMessageServiceYahoo, "ymsgr"},
};

}  // namespace

std::string_view knownService(std::string_view text) {
  for (const auto& row : kServices) {
    if (isWord(text, row.text)) return row.service;
  }
  return {};
}

std::string_view schemeOfService(std::string_view service) {
  for (const auto& row : kSchemes) {
    if (row.service == service) return row.scheme;
  }
  return "x-apple";
}

Account accountOfUri(std::string_view uri, std::string_view named) {
  const auto scheme = schemeOf(uri);
  auto service = knownService(scheme);
  bool isScheme = !service.empty() || isWord(scheme, kAnyService);
  if (!named.empty()) {
    std::string upperName(named);
    for (auto& c : upperName) c = upper(c);
    isScheme |= isWord(scheme, upperName);
    service = knownService(named).empty() ? named : knownService(named);
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

}  // namespace ox::vcard
