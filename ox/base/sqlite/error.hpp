#pragma once

#include <string>

#include "ox/base/failure.hpp"

namespace ox::sqlite {

// A statement or a file that SQLite refused. code() is the extended result code; kind() is what it
// means to others, who need to know none of SQLite's codes.
class Error : public FailureError {
 public:
  Error(int code, const std::string& what);
  int code() const { return code_; }
  bool isBusy() const { return kind() == FailureKind::Busy; }

 private:
  int code_;
};

}  // namespace ox::sqlite
