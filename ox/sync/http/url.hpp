#pragma once

#include <string>
#include <string_view>

// URLs of http and https, read by one parser for all that is decided about them and for what is
// sent, so that nobody can be led to one host while another one was looked at.

namespace ox::sync {

struct Url {
  std::string text;    // as it is asked for: without user, password and fragment
  std::string scheme;  // http or https
  std::string host;    // lower case; an IPv6 address in brackets
  int port = 0;        // that of the scheme where none was written
  std::string path;    // as it is asked for, without the query

  std::string origin() const;  // https://host:port
  std::string place() const;   // host:port
  std::string shown() const;   // for people: without the query too, which may hold a secret

  bool operator==(const Url&) const = default;
};

// Bytes that a URL cannot hold are percent-encoded, nothing else is changed. Throws RemoteError
// (Usage) for what is no URL of http or https with a host.
Url parsedUrl(const std::string& text);

// What a reference (a Location, an href) means where it was found (RFC 3986, section 5). Throws
// RemoteError (Protocol).
Url resolvedUrl(const Url& base, const std::string& reference);

}  // namespace ox::sync
