#include "ox/sync/run/login_lock.hpp"

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

#include "ox/base/planted.hpp"
#include "ox/base/store_location.hpp"

namespace ox::sync {

std::optional<LoginLock> LoginLock::tryToTake(std::int64_t login) {
  const auto path = placeOf(contactStore().file()) + ".sync-lock";
  refusePlanted(path);
  const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (file < 0) throw std::system_error(errno, std::generic_category(), path);
  LoginLock lock(file);
  struct flock range {};
  range.l_type = F_WRLCK;
  range.l_whence = SEEK_SET;
  range.l_start = login;
  range.l_len = 1;
  // The lock of the open file and not of the process: whoever else in this process opens and closes
  // the file does not end it.
  if (::fcntl(file, F_OFD_SETLK, &range) == 0) return lock;
  if (errno == EAGAIN || errno == EACCES) return std::nullopt;
  throw std::system_error(errno, std::generic_category(), path);
}

LoginLock::~LoginLock() {
  if (file_ >= 0) ::close(file_);
}

}  // namespace ox::sync
