#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ox/sync/dav/wire/multistatus_reader.hpp"
#include "ox/sync/http/http_client.hpp"

namespace ox::sync {

// Takes the body of a 207 as it comes. Each try of the request begins anew: what was told of one
// that broke off is to be forgotten then.
class MultistatusBody {
 public:
  MultistatusBody(std::function<void()> begin, std::function<void(DavResponse)> sink);
  MultistatusBody(const MultistatusBody&) = delete;
  MultistatusBody& operator=(const MultistatusBody&) = delete;

  // Throws RemoteError (Protocol) for what is no 207 or no XML: the page of a captive portal has
  // code 200 too.
  void begin(const HttpAnswer& head);
  void take(std::string_view part);
  // After the last part. Throws RemoteError (Protocol) unless the root element was closed.
  void finish(const HttpAnswer& answer);
  const std::string& syncToken() const;

  BodySink sink();  // borrows

 private:
  std::function<void()> onBegin_;
  std::function<void(DavResponse)> onResponse_;
  std::optional<MultistatusReader> reader_;
};

struct Multistatus {
  HttpAnswer answer;
  std::vector<DavResponse> responses;
  std::string syncToken;
};

// Sends a request that is answered by a short multistatus. An answer that is no 2xx is handed on
// without responses. Throws RemoteError (Protocol) for any 2xx that is no whole multistatus.
Multistatus multistatusOf(HttpClient& client, const HttpRequest& request);
// The same, where it is already there in the body.
std::vector<DavResponse> responsesIn(const HttpAnswer& answer);

// Why a 4xx or 5xx says no.
struct DavRefusal {
  std::vector<std::string> conditions;  // local names of what stands within DAV:error
  std::string said;                     // one short line; empty: nothing for people

  bool names(std::string_view condition) const;
};
DavRefusal refusalOf(const HttpAnswer& answer);

// "https://host/book answered 500 (Internal Server Error)".
std::string sentenceOf(const HttpAnswer& answer);

}  // namespace ox::sync
