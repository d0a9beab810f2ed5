#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ox/sync/dav/wire/xml_reader.hpp"

namespace ox::sync {

// An element within a property, however deep.
struct DavElement {
  std::string name;
  std::string text;  // its own, without the white space around it
  XmlAttributes attributes;
};

struct DavProperty {
  std::string name;  // "{namespace}local"
  int status = 0;    // of its propstat; 0: none was told
  std::string text;  // its own, exactly
  std::vector<DavElement> elements;

  // Without the white space around it, which servers add for readers.
  std::string_view value() const;
  bool has(std::string_view element) const;
  // Of the elements `href`.
  std::vector<std::string> hrefs() const;
};

// One `response` of a multistatus (RFC 4918, section 14.24).
struct DavResponse {
  std::string href;
  int status = 0;  // of the response as a whole; 0: its propstats have theirs
  std::vector<DavProperty> properties;
  std::vector<std::string> errors;  // what stands within `error`
  std::string said;                 // responsedescription

  // Borrowed; null when it was not asked for or not told with a 2xx.
  const DavProperty* property(std::string_view name) const;
};

// The number of "HTTP/1.1 404 Not Found"; 0 for what is none.
int statusCode(std::string_view line);

// Reads a multistatus from parts of any length and gives one response after the other, which is all
// of it that it holds. Throws RemoteError (Protocol) as XmlReader does, and for what is no
// multistatus, or has more than 2,000,000 responses or 10,000 elements in one of them.
class MultistatusReader : private XmlHandler {
 public:
  explicit MultistatusReader(std::function<void(DavResponse)> sink);

  void take(std::string_view part) { reader_.take(part); }
  // Only now it is known that nothing was cut off: throws when something was.
  void finish();
  // What stood beside the responses; empty when there was none.
  const std::string& syncToken() const { return syncToken_; }

 private:
  enum class Place : std::uint8_t {
    Ignored,
    Root,
    Token,
    Response,
    Href,
    Status,
    Error,
    ErrorName,
    Said,
    Propstat,
    PropstatStatus,
    Prop,
    Property,
    Element,
  };

  void beginElement(std::string_view name, const XmlAttributes& attributes) override;
  void text(std::string_view part) override;
  void endElement() override;

  Place placeOf(std::string_view name) const;
  void beginPart(std::string_view name, const XmlAttributes& attributes);
  void endPart(Place place);
  void endPropstat();
  void endResponse();

  std::function<void(DavResponse)> sink_;
  std::vector<Place> places_;          // of the open elements
  std::vector<std::size_t> elements_;  // of the open ones within a property, by place in it
  DavResponse response_;
  std::vector<std::string> hrefs_;
  std::size_t propstatFrom_ = 0;  // first property of the open propstat
  std::string propstatStatus_;
  std::string status_;
  std::string syncToken_;
  std::size_t responses_ = 0;
  std::size_t parts_ = 0;  // elements of the open response
  XmlReader reader_;
};

}  // namespace ox::sync
