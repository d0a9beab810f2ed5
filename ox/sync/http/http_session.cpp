#include "ox/sync/http/http_session.hpp"

#include <cstddef>
#include <utility>

#include "ox/base/base64.hpp"
#include "ox/sync/http/private_host.hpp"
#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {
namespace {

// The place that a user names: a URL, a host, or user@domain.
Url namedPlace(const std::string& text) {
  if (text.find("://") != std::string::npos) return parsedUrl(text);
  return parsedUrl("https://" + text.substr(text.rfind('@') + 1));
}

}  // namespace

HttpSession::HttpSession(LoginSettings loginSettings, WireHooks wireHooks, HttpLimits httpLimits)
    : login(std::move(loginSettings)), hooks(std::move(wireHooks)), limits(httpLimits) {
  const auto place = namedPlace(login.url);
  ownHost_ = place.host;
  accepted_.insert(place.origin());
  if (login.password.kind == PasswordSource::Kind::BearerCommand) scheme = Scheme::Bearer;
}

void HttpSession::open() {
  if (!secret_) secret_ = readSecret(login.password, hooks);
}

void HttpSession::checkEncrypted(const Url& url) const {
  if (url.scheme == "https" || login.allowHttp) return;
  throw RemoteError(RemoteFailure::Unencrypted,
                    url.shown() + " is not encrypted, and the login does not allow that");
}

Url HttpSession::redirected(const Url& from, const std::string& location) const {
  auto target = resolvedUrl(from, location);
  if (from.scheme == "https" && target.scheme == "http") {
    throw RemoteError(RemoteFailure::Insecure, from.place() + " leads to " + target.place() +
                                                   ", where nothing is encrypted");
  }
  checkEncrypted(target);
  if (target.host != from.host && isPrivateHost(target.host) && !isPrivateHost(ownHost_)) {
    throw RemoteError(RemoteFailure::Insecure,
                      from.place() + " leads into a private network, to " + target.place());
  }
  return target;
}

std::string HttpSession::withoutSecret(std::string text) const {
  constexpr std::size_t kShortest = 6;
  if (!secret_) return text;
  const Secret basic(base64(login.user + ":" + secret_->text()));
  for (const auto* secret : {&secret_->text(), &basic.text()}) {
    if (secret->size() < kShortest) continue;
    std::string shown;
    std::size_t from = 0;
    for (auto at = text.find(*secret); at != std::string::npos; at = text.find(*secret, from)) {
      shown.append(text, from, at - from).append("...");
      from = at + secret->size();
    }
    if (from > 0) text = shown.append(text, from);
  }
  return text;
}

void HttpSession::checkStopped() const {
  if (hooks.isStopped && hooks.isStopped()) {
    throw RemoteError(RemoteFailure::Stopped, "stopped before it was done");
  }
}

void HttpSession::trace(const std::string& line) const {
  if (hooks.trace) hooks.trace(withoutSecret(line));
}

}  // namespace ox::sync
