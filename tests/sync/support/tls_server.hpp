#pragma once

#include <memory>
#include <string>

#include "tests/support/second_process.hpp"

namespace ox::support {

// NAME.pem in the test's folder, a key and its certificate, beside NAME.key and NAME.crt; of an
// authority, or signed by the authority of that name. The names are those that it is valid for
// ("IP:127.0.0.1").
void makeCertificate(const std::string& name, const std::string& subject,
                     const std::string& authority = {}, const std::string& names = {});

// A server of HTTPS on loopback, in a process of its own, with that certificate; clients may show
// one that the authority has signed. It says hello to the name in their certificate, and leads from
// /to/URL to the URL.
class TlsServer {
 public:
  explicit TlsServer(const std::string& name, const std::string& authority = {});
  TlsServer(const TlsServer&) = delete;
  TlsServer& operator=(const TlsServer&) = delete;
  ~TlsServer();

  std::string place() const;  // 127.0.0.1:PORT
  std::string url(const std::string& target = "/") const { return "https://" + place() + target; }
  // A line for each request: method, target, Authorization.
  std::string log() const;

 private:
  std::string name_;
  std::unique_ptr<RunningProcess> process_;
};

}  // namespace ox::support
