#pragma once

#include <string>
#include <utility>

#include "ox/base/export.hpp"
#include "ox/base/failure.hpp"

namespace ox {

// The store failed: it cannot be opened, read or written. kind() tells what a program may do about
// it, subject() the file.
class OX_EXPORT StoreError : public FailureError {
 public:
  using Kind = FailureKind;
  using FailureError::FailureError;
};

// The file can be read but one record of it, the subject, cannot.
class OX_EXPORT DamagedRecord : public StoreError {
 public:
  DamagedRecord(const std::string& what, std::string record)
      : StoreError(Kind::Corrupt, what, std::move(record)) {}
};

// A stored picture that cannot be read back; the subject is its record.
class OX_EXPORT ImageReadError : public FailureError {
 public:
  explicit ImageReadError(const std::string& what, std::string record = {})
      : FailureError(FailureKind::Corrupt, what, std::move(record)) {}
};

}  // namespace ox
