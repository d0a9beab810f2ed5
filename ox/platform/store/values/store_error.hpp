#pragma once

#include <stdexcept>
#include <string>

#include "ox/base/export.hpp"

namespace ox {

// The store failed: it cannot be opened, read or written. kind() tells what a program may do about
// it.
class OX_EXPORT StoreError : public std::runtime_error {
 public:
  enum class Kind { Busy, NotAStore, NewerSchema, Unavailable, Corrupt, Denied };

  StoreError(Kind kind, const std::string& what) : std::runtime_error(what), kind_(kind) {}
  Kind kind() const { return kind_; }

 private:
  Kind kind_;
};

// The file can be read but one record of it cannot.
class OX_EXPORT DamagedRecord : public StoreError {
 public:
  explicit DamagedRecord(const std::string& what) : StoreError(Kind::Corrupt, what) {}
};

// A stored picture that cannot be read back.
class OX_EXPORT ImageReadError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace ox
