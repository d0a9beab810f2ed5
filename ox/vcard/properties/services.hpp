#pragma once

#include <string>
#include <string_view>

// Services of instant messages as cards name them (RFC 4770).

namespace ox::vcard {

// The scheme of accounts at a service that has none of its own.
inline constexpr std::string_view kAnyService = "X-APPLE";

// The service's name in the store for a scheme or for how programs name it, in any case; empty when
// the text names no service that has a constant.
std::string_view knownService(std::string_view text);

// An account at a service; both empty when they are not there.
struct Account {
  std::string user;
  std::string service;

  bool operator==(const Account&) const = default;
};

// The account that a value of IMPP means. `named` is what X-SERVICE-TYPE says, which tells the
// service more exactly than the scheme.
Account accountOfUri(std::string_view uri, std::string_view named);
// The value of IMPP for an account.
std::string uriOfAccount(const Account& account);

// The scheme that a URI of that service has: kAnyService, in lower case, when it has none.
std::string_view schemeOfService(std::string_view service);

}  // namespace ox::vcard
