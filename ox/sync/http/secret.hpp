#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "ox/sync/login_settings.hpp"

namespace ox::sync {

// A password or a token while it is in use. Its memory is overwritten at the end.
class Secret {
 public:
  explicit Secret(std::string_view text) : text_(text) {}
  Secret(const Secret&) = delete;
  Secret& operator=(const Secret&) = delete;
  ~Secret();

  const std::string& text() const { return text_; }

 private:
  std::string text_;
};

// Reads it from where it is kept; null for Kind::None. Throws RemoteError: Usage for a file or a
// credential that is not there or can be read by others, Login where a command fails or nothing
// comes, Stopped. No message holds the secret, or more of a command than its first word.
std::unique_ptr<const Secret> readSecret(const PasswordSource& source, const WireHooks& hooks);

}  // namespace ox::sync
