#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "ox/base/export.hpp"

namespace ox::sync {

// Why a login or a book elsewhere could not be used: the one list of kinds.
enum class RemoteFailure : std::uint8_t {
  Usage,        // what was asked for makes no sense: a URL that is none, a missing password file
  Login,        // refused: user or password, or the command that gives it failed
  NoBook,       // something answered, and it is no address book and leads to none
  Away,         // the book is not there any more, or not now
  Unreachable,  // no connection, no answer, a name that nobody knows
  Insecure,     // the certificate does not fit, or a redirect leads to where nothing is encrypted
  TryLater,     // it asked to be left alone for a while
  Protocol,     // what it answered makes no sense, or is cut short, or too large
  Stopped,      // the host asked to stop
  Unencrypted,  // http, which the login does not allow
};

// Says in one sentence what failed, where and why, without any secret.
class OX_EXPORT RemoteError : public std::runtime_error {
 public:
  RemoteError(RemoteFailure kind, const std::string& what, std::int64_t notBefore = 0)
      : std::runtime_error(what), kind_(kind), notBefore_(notBefore) {}
  RemoteFailure kind() const { return kind_; }
  // Of TryLater: when it may be asked again, in milliseconds since 1970; 0 when it did not say.
  std::int64_t notBefore() const { return notBefore_; }

 private:
  RemoteFailure kind_;
  std::int64_t notBefore_;
};

}  // namespace ox::sync
