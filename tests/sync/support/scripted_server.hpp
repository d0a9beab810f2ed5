#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ox::support {

using ScriptedHeaders = std::vector<std::pair<std::string, std::string>>;

// A request as it arrived, its body whole.
struct ScriptedRequest {
  std::string method;
  std::string target;       // path and query, as sent
  ScriptedHeaders headers;  // names in lower case, in the order of their coming
  std::string body;
  std::size_t connection = 0;  // which of the server's connections, counted from 0

  // Empty without it.
  std::string header(std::string_view lowerCaseName) const;
  bool has(std::string_view lowerCaseName) const;
};

// What is sent back, and what is to go wrong on the way. Content-Length or Transfer-Encoding are
// written by the server.
struct ScriptedAnswer {
  enum class Framing { Length, Chunked, UntilClose };

  int status = 200;
  ScriptedHeaders headers = {};
  std::string body = {};
  Framing framing = Framing::Length;
  // What follows the body, part by part, for as long as it is not empty: for a body that is made
  // while it is sent, whose framing is not Length.
  std::function<std::string()> rest = {};

  bool closesUnanswered = false;              // the request was read, the connection is closed
  bool closesAfterwards = false;              // without a word about it in the headers
  bool resets = false;                        // where it is closed, it is by a reset
  std::optional<std::size_t> cutAt = {};      // so much of the body is sent, then it closes
  std::optional<std::size_t> promised = {};   // the Content-Length that is told instead
  std::chrono::milliseconds silence{0};       // before the first byte
  std::optional<std::size_t> stallsAt = {};   // so much of the body is sent, then nothing more
  std::chrono::milliseconds pauseBetween{0};  // after each byte of the body
  std::size_t bytesAtOnce = 65536;            // of the body, where there is no such pause
};

// A server of HTTP/1.1 on loopback with keep-alive, which answers as a test says and remembers
// what it was asked. One thread for each connection; what is being waited for ends with the object.
class ScriptedServer {
 public:
  using Script = std::function<ScriptedAnswer(const ScriptedRequest&)>;

  ScriptedServer();
  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;
  ~ScriptedServer();

  // Asked for each request, on other threads but never twice at once. Before it is set, everything
  // is answered with 404.
  void answer(Script script);
  // So many connections to come are closed before anything is read from them.
  void closeNext(std::size_t connections);
  // Nobody listens at the port until it is opened again. Connections that are open stay.
  void refuse();
  void open();

  std::string origin() const;  // http://127.0.0.1:PORT
  std::string url(const std::string& path = "/") const { return origin() + path; }
  int port() const;

  // Those that were read whole so far, in their order.
  std::vector<ScriptedRequest> requests() const;
  std::size_t connections() const;
  // How many requests were being answered at the same time at most.
  std::size_t mostAtOnce() const;

 private:
  class Parts;
  std::unique_ptr<Parts> parts_;
};

// "GET /a" for each, joined by ", ".
std::string listed(const std::vector<ScriptedRequest>& requests);

}  // namespace ox::support
