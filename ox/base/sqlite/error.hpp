#pragma once

#include <stdexcept>
#include <string>

namespace ox::sqlite {

// A statement or a file that SQLite refused. code() is the extended result code.
class Error : public std::runtime_error {
 public:
  Error(int code, const std::string& what) : std::runtime_error(what), code_(code) {}
  int code() const { return code_; }
  bool isBusy() const { return (code_ & 0xFF) == 5 || (code_ & 0xFF) == 6; }

 private:
  int code_;
};

}  // namespace ox::sqlite
