#include "ox/base/sqlite/error.hpp"

#include <sqlite3.h>

namespace ox::sqlite {
namespace {

FailureKind kindOfCode(int code) {
  if (code == SQLITE_IOERR_NOMEM) return FailureKind::NoMemory;
  switch (code & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return FailureKind::Busy;
    case SQLITE_FULL:
      return FailureKind::Full;
    case SQLITE_PERM:
    case SQLITE_AUTH:
    case SQLITE_READONLY:
      return FailureKind::Denied;
    case SQLITE_NOTADB:
      return FailureKind::NotAStore;
    case SQLITE_CORRUPT:
      return FailureKind::Corrupt;
    case SQLITE_NOMEM:
      return FailureKind::NoMemory;
    default:
      return FailureKind::Unavailable;
  }
}

}  // namespace

Error::Error(int code, const std::string& what)
    : FailureError(kindOfCode(code), what), code_(code) {}

}  // namespace ox::sqlite
