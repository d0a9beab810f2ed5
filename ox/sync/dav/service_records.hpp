#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace ox::sync {

// What DNS says of a service of a domain (RFC 6764): where it is, best first, and the path to begin
// with. Empty where it says nothing.
struct ServiceRecords {
  struct Target {
    std::string host;  // lower case, without a dot at its end
    int port = 0;

    bool operator==(const Target&) const = default;
  };
  std::vector<Target> targets;
  std::string path;  // of TXT; empty: none

  bool operator==(const ServiceRecords&) const = default;
};

// The service is "_carddavs._tcp", say.
using Resolver =
    std::function<ServiceRecords(const std::string& service, const std::string& domain)>;

// Asks the system's name servers. A name that nobody knows and servers that do not answer are both
// nothing: the domain itself is tried then.
ServiceRecords serviceRecords(const std::string& service, const std::string& domain);

// What one answer of a name server holds: the targets of its SRV records, and the "path=" of its
// TXT ones. What it is not made of is passed over.
ServiceRecords serviceRecordsIn(std::span<const std::uint8_t> message);

}  // namespace ox::sync
