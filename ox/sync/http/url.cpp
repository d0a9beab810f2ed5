#include "ox/sync/http/url.hpp"

#include <charconv>
#include <curl/curl.h>
#include <memory>
#include <new>

#include "ox/base/text/ascii_case.hpp"
#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {
namespace {

struct Freed {
  void operator()(CURLU* url) const { curl_url_cleanup(url); }
  void operator()(char* text) const { curl_free(text); }
};
using Handle = std::unique_ptr<CURLU, Freed>;

// Dot segments stay: what was spelled by the other side is asked for as it was spelled.
constexpr unsigned int kReading = CURLU_URLENCODE | CURLU_PATH_AS_IS;

Handle newHandle() {
  Handle handle(curl_url());
  if (!handle) throw std::bad_alloc();
  return handle;
}

// Empty where it has none.
std::string part(const Handle& handle, CURLUPart which, unsigned int flags = 0) {
  char* text = nullptr;
  if (curl_url_get(handle.get(), which, &text, flags) != CURLUE_OK) return {};
  const std::unique_ptr<char, Freed> owned(text);
  return text;
}

// As it stands, or relative to what the handle holds. False for what is none.
bool take(const Handle& handle, const std::string& text) {
  return text.find('\0') == std::string::npos &&
         curl_url_set(handle.get(), CURLUPART_URL, text.c_str(), kReading) == CURLUE_OK;
}

// False where it is none of http or https with a host.
bool read(const Handle& handle, Url& url) {
  for (const auto secret : {CURLUPART_USER, CURLUPART_PASSWORD, CURLUPART_FRAGMENT}) {
    curl_url_set(handle.get(), secret, nullptr, 0);
  }
  url.scheme = lowerCase(part(handle, CURLUPART_SCHEME));
  url.host = lowerCase(part(handle, CURLUPART_HOST));
  url.path = part(handle, CURLUPART_PATH);
  url.text = part(handle, CURLUPART_URL);
  const auto port = part(handle, CURLUPART_PORT, CURLU_DEFAULT_PORT);
  std::from_chars(port.data(), port.data() + port.size(), url.port);
  return (url.scheme == "http" || url.scheme == "https") && !url.host.empty() &&
         !url.text.empty() && url.port > 0;
}

// A text that may hold a password is not repeated.
std::string withoutSecrets(const std::string& text) {
  const auto query = text.find_first_of("?#");
  auto shown = text.substr(0, query);
  const auto at = shown.rfind('@');
  return at == std::string::npos ? shown : "..." + shown.substr(at);
}

}  // namespace

std::string Url::origin() const {
  return scheme + "://" + place();
}

std::string Url::place() const {
  return host + ":" + std::to_string(port);
}

std::string Url::shown() const {
  return text.substr(0, text.find('?'));
}

Url parsedUrl(const std::string& text) {
  const auto handle = newHandle();
  Url url;
  if (!take(handle, text) || !read(handle, url)) {
    throw RemoteError(RemoteFailure::Usage,
                      "'" + withoutSecrets(text) + "' is no URL of https or http");
  }
  return url;
}

Url resolvedUrl(const Url& base, const std::string& reference) {
  const auto handle = newHandle();
  Url url;
  if (!take(handle, base.text) || !take(handle, reference) || !read(handle, url)) {
    throw RemoteError(RemoteFailure::Protocol, base.place() + " leads to '" +
                                                   withoutSecrets(reference) +
                                                   "', which is no URL of https or http");
  }
  return url;
}

}  // namespace ox::sync
