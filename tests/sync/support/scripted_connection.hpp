#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "tests/sync/support/scripted_server.hpp"

namespace ox::support {

// One connection of a scripted server: reads requests and writes answers with their faults.
class ScriptedConnection {
 public:
  // Waits that long; false when the server is ending.
  using Wait = std::function<bool(std::chrono::milliseconds)>;

  // Borrows the socket.
  ScriptedConnection(int socket, Wait wait) : socket_(socket), wait_(std::move(wait)) {}

  // The next request; missing when the other side is done, or sends what is no request.
  std::optional<ScriptedRequest> read();
  // All but the silence before it. False when the connection is to be closed then.
  bool write(const ScriptedRequest& request, const ScriptedAnswer& answer);

 private:
  bool refusesTls();
  bool readMore();
  bool readTo(std::size_t size);
  std::optional<std::string> takeLine();
  bool readChunks(std::string& body);
  bool send(std::string_view bytes);
  bool sendPart(std::string_view part, const ScriptedAnswer& answer);
  bool sendBody(std::string_view body, const ScriptedAnswer& answer);

  int socket_;
  Wait wait_;
  std::string buffer_;
};

}  // namespace ox::support
