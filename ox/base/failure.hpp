#pragma once

#include <cstdint>
#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

#include "ox/base/export.hpp"

namespace ox {

// What kind of thing went wrong: the one list of kinds, whoever throws, notices or reports it.
enum class FailureKind : std::uint8_t {
  Refused,      // something was asked for that is not allowed, and nothing changed
  Busy,         // another process keeps the file locked
  Full,         // there is no room left on the disk
  Denied,       // this process has no leave
  Unavailable,  // the file cannot be opened, read or written for another reason
  NotAStore,    // the file is another program's, or no database at all
  NewerSchema,  // the file was written by a newer version
  Corrupt,      // what the file holds is damaged
  NoMemory,
  Other,  // the reason is all that is known
};

// Something that went wrong, in words and by kind.
struct Failure {
  FailureKind kind = FailureKind::Other;
  std::string reason;
  std::string subject;  // the record (its identifier) or the file that is meant; empty if neither

  bool isRefusal() const { return kind == FailureKind::Refused; }
  bool operator==(const Failure&) const = default;
};

// An exception that knows its kind.
class OX_EXPORT FailureError : public std::runtime_error {
 public:
  FailureError(FailureKind kind, const std::string& what, std::string subject = {})
      : std::runtime_error(what), kind_(kind), subject_(std::move(subject)) {}
  FailureKind kind() const { return kind_; }
  const std::string& subject() const { return subject_; }

 private:
  FailureKind kind_;
  std::string subject_;
};

// The kind of whatever was thrown, and all that it tells.
OX_EXPORT FailureKind kindOf(const std::exception& error);
OX_EXPORT Failure failureOf(const std::exception& error);

}  // namespace ox
