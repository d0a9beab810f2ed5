#pragma once

#include <string>
#include <vector>

#include "ox/sync/dav/service_records.hpp"
#include "ox/sync/login_settings.hpp"

namespace ox::sync {

// Where to look for what the URL of a login names.
struct LoginPlace {
  std::string domain;               // lower case; hosts of it and below it belong to the login
  std::vector<std::string> starts;  // URLs, to be asked in this order until one leads to a book
};

// Throws RemoteError (Usage) for what names no place.
LoginPlace loginPlace(const LoginSettings& settings, const Resolver& resolver);

}  // namespace ox::sync
