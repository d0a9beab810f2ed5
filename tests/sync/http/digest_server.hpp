#pragma once

#include <map>
#include <string>

#include "tests/support/second_process.hpp"
#include "tests/sync/support/scripted_server.hpp"

namespace ox::sync {

inline std::string md5(const std::string& text) {
  return support::runProcess({"/usr/bin/md5sum"}, text).output.substr(0, 32);
}

// The parameters of "Digest a="b", c=d".
inline std::map<std::string, std::string> digestParameters(const std::string& header) {
  std::map<std::string, std::string> parameters;
  for (std::size_t at = 7; at < header.size();) {
    const auto equals = header.find('=', at);
    if (equals == std::string::npos) break;
    const bool isQuoted = header.at(equals + 1) == '"';
    const auto start = equals + (isQuoted ? 2 : 1);
    const auto end = std::min(header.find(isQuoted ? '"' : ',', start), header.size());
    parameters[header.substr(at, equals - at)] = header.substr(start, end - start);
    at = header.find_first_not_of("\", ", end);
  }
  return parameters;
}

// What a server of Digest (RFC 7616, MD5, qop auth) makes of a request: whether the user knows the
// password, by a nonce that is still good.
inline bool isDigestOf(const support::ScriptedRequest& request, const std::string& user,
                       const std::string& password, const std::string& nonce) {
  const auto header = request.header("authorization");
  if (!header.starts_with("Digest ")) return false;
  auto said = digestParameters(header);
  if (said["username"] != user || said["nonce"] != nonce || said["uri"] != request.target) {
    return false;
  }
  const auto first = md5(user + ":" + said["realm"] + ":" + password);
  const auto second = md5(request.method + ":" + said["uri"]);
  return said["response"] == md5(first + ":" + nonce + ":" + said["nc"] + ":" + said["cnonce"] +
                                 ":" + said["qop"] + ":" + second);
}

inline support::ScriptedAnswer digestChallenge(const std::string& nonce,
                                               const std::string& more = {}) {
  return {.status = 401,
          .headers = {{"WWW-Authenticate", "Basic realm=\"Cards\""},
                      {"WWW-Authenticate",
                       R"(Digest realm="Cards", nonce=")" + nonce + R"(", qop="auth")" + more}},
          .body = "who are you?"};
}

}  // namespace ox::sync
