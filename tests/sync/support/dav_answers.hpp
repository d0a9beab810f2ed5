#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/sync/support/scripted_server.hpp"

// What the cases of CardDAV read in requests and write into answers.

namespace ox::support {

inline ScriptedAnswer xmlAnswer(int status, std::string body) {
  return {.status = status,
          .headers = {{"Content-Type", "application/xml; charset=utf-8"}},
          .body = std::move(body)};
}

// A 207 with that between the tags of its root. Prefixes: none is DAV, C is CardDAV, S the one of
// the ctag.
inline ScriptedAnswer multistatus(const std::string& inner) {
  return xmlAnswer(207,
                   "<?xml version=\"1.0\"?><multistatus xmlns=\"DAV:\""
                   " xmlns:C=\"urn:ietf:params:xml:ns:carddav\""
                   " xmlns:S=\"http://calendarserver.org/ns/\">" +
                       inner + "</multistatus>");
}

inline std::string response(const std::string& href, const std::string& inner) {
  return "<response><href>" + href + "</href>" + inner + "</response>";
}
inline std::string propstat(const std::string& properties, const std::string& status = "200 OK") {
  return "<propstat><prop>" + properties + "</prop><status>HTTP/1.1 " + status +
         "</status></propstat>";
}
inline std::string status(const std::string& code) {
  return "<status>HTTP/1.1 " + code + "</status>";
}
inline std::string listed(const std::string& href, const std::string& etag) {
  return response(href, propstat("<getetag>" + etag + "</getetag>"));
}
inline std::string gone(const std::string& href) {
  return response(href, status("404 Not Found"));
}
inline std::string token(const std::string& text) {
  return "<sync-token>" + text + "</sync-token>";
}
inline std::string itself(const std::string& properties = {}) {
  return response(
      "/b/", propstat("<resourcetype><collection/><C:addressbook/></resourcetype>" + properties));
}
inline ScriptedAnswer plain(int code, std::string body = {}) {
  return {.status = code, .headers = {{"Content-Type", "text/plain"}}, .body = std::move(body)};
}
inline ScriptedAnswer page() {
  return {.status = 200,
          .headers = {{"Content-Type", "text/html"}},
          .body = "<html><body>Please log in to this network.</body></html>"};
}

// What stands between <sync-token> and its end in a request.
inline std::string tokenIn(const ScriptedRequest& request) {
  const auto from = request.body.find("<sync-token>");
  if (from == std::string::npos) return "none";
  const auto end = request.body.find("</sync-token>");
  return request.body.substr(from + 12, end - from - 12);
}

inline std::vector<std::string> hrefsIn(const ScriptedRequest& request) {
  std::vector<std::string> hrefs;
  for (auto at = request.body.find("<href>"); at != std::string::npos;
       at = request.body.find("<href>", at + 1)) {
    hrefs.push_back(request.body.substr(at + 6, request.body.find("</href>", at) - at - 6));
  }
  return hrefs;
}

inline bool isReport(const ScriptedRequest& request, const std::string& name) {
  return request.method == "REPORT" && request.body.find(name) != std::string::npos;
}

}  // namespace ox::support
