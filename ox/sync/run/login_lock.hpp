#pragma once

#include <cstdint>
#include <optional>

namespace ox::sync {

// One run a login at a time, in whatever process: a lock on a byte of a file beside the store,
// which ends with the process that holds it. Edits of contacts go on meanwhile.
class LoginLock {
 public:
  // Missing while somebody else holds it. Throws std::system_error.
  static std::optional<LoginLock> tryToTake(std::int64_t login);

  LoginLock(LoginLock&& other) noexcept : file_(other.file_) { other.file_ = -1; }
  LoginLock(const LoginLock&) = delete;
  LoginLock& operator=(const LoginLock&) = delete;
  LoginLock& operator=(LoginLock&&) = delete;
  ~LoginLock();

 private:
  explicit LoginLock(int file) : file_(file) {}

  int file_;
};

}  // namespace ox::sync
