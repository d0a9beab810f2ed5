#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "ox/base/export.hpp"

namespace ox::sync {

// Where the secret of a login comes from, asked anew in each run. The secret itself is never kept,
// never printed, and never in the arguments of a process.
struct PasswordSource {
  enum class Kind : std::uint8_t {
    None,           // no login
    Command,        // the first line that a command of the user's shell prints
    File,           // the first line of a file that nobody else can read (0600)
    Credential,     // the file of that name in $CREDENTIALS_DIRECTORY
    BearerCommand,  // as Command, a token for "Authorization: Bearer"
  };
  Kind kind = Kind::None;
  std::string text;  // the command, the path, or the name

  bool operator==(const PasswordSource&) const = default;
};

// How a place elsewhere is reached. A value.
struct LoginSettings {
  enum class Kind : std::uint8_t { CardDav, Folder };
  Kind kind = Kind::CardDav;
  // https://host/path, a host alone, or user@domain; of a folder its absolute path.
  std::string url;
  std::string user;
  PasswordSource password;
  std::string clientCertificate;  // file (PEM) with certificate and key; empty: none
  std::string authorities;        // file (PEM) of the authorities that count; empty: the system's
  bool allowHttp = false;

  bool operator==(const LoginSettings&) const = default;
};

// How a host takes part in what goes over the wire. Called on the thread that synchronises.
struct WireHooks {
  // Looked at often; true ends the work with RemoteFailure::Stopped.
  std::function<bool()> isStopped;
  // One line for each request: method, URL, status, milliseconds; no header, no text of a card.
  std::function<void(std::string_view)> trace;
  // What is being waited for, when an answer takes more than some seconds.
  std::function<void(std::string_view)> waiting;
};

}  // namespace ox::sync
