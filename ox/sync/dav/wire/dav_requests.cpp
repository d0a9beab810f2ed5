#include "ox/sync/dav/wire/dav_requests.hpp"

#include <utility>

#include "ox/sync/dav/wire/dav_href.hpp"
#include "ox/sync/dav/wire/dav_names.hpp"

namespace ox::sync {

namespace {

constexpr std::string_view kHead = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";
constexpr std::string_view kSpaces =
    " xmlns=\"DAV:\" xmlns:C=\"urn:ietf:params:xml:ns:carddav\""
    " xmlns:S=\"http://calendarserver.org/ns/\"";

// "{namespace}local" as it is written below those declarations.
std::string emptyElement(std::string_view name) {
  const auto end = name.find('}');
  const auto space = name.substr(1, end - 1);
  const auto prefix = space == dav::kCardSpace ? "C:" : space == dav::kServerSpace ? "S:" : "";
  return std::string("<") + prefix + std::string(name.substr(end + 1)) + "/>";
}

HttpRequest xmlRequest(std::string method, const std::string& url, Depth depth, std::string body) {
  HttpRequest request;
  request.method = std::move(method);
  request.url = url;
  request.headers = {depth == Depth::Itself ? "Depth: 0" : "Depth: 1",
                     "Content-Type: application/xml; charset=utf-8"};
  request.body = std::move(body);
  request.onlyReads = true;
  return request;
}

}  // namespace

HttpRequest propfind(const std::string& url, Depth depth,
                     std::span<const std::string_view> properties) {
  std::string body(kHead);
  body.append("<propfind").append(kSpaces).append("><prop>");
  for (const auto name : properties) body += emptyElement(name);
  body += "</prop></propfind>\n";
  return xmlRequest("PROPFIND", url, depth, std::move(body));
}

// The depth of the request is 0, that of the listing is its level (RFC 6578, section 3.2).
HttpRequest syncCollection(const std::string& url, std::string_view token) {
  std::string body(kHead);
  body.append("<sync-collection xmlns=\"DAV:\"><sync-token>").append(escapedXml(token));
  body.append("</sync-token><sync-level>1</sync-level><prop><getetag/></prop></sync-collection>\n");
  return xmlRequest("REPORT", url, Depth::Itself, std::move(body));
}

HttpRequest multiget(const std::string& url, std::span<const std::string> hrefs) {
  std::string body(kHead);
  body.append("<C:addressbook-multiget").append(kSpaces);
  body.append("><prop><getetag/><C:address-data/></prop>");
  for (const auto& href : hrefs) body.append("<href>").append(escapedXml(href)).append("</href>");
  body += "</C:addressbook-multiget>\n";
  return xmlRequest("REPORT", url, Depth::Itself, std::move(body));
}

}  // namespace ox::sync
