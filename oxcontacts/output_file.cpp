#include "oxcontacts/output_file.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <iostream>
#include <sys/stat.h>
#include <system_error>

#include "oxcontacts/context.hpp"
#include "oxcontacts/files.hpp"

namespace ox::program {
namespace {

constexpr std::array<std::string_view, 4> kStandardOutput = {"-", "/dev/stdout", "/dev/fd/1",
                                                             "/proc/self/fd/1"};

void check(const std::ostream& output) {
  // The end of the program says why.
  if (!output) throw CommandError(kFailed, "");
}

}  // namespace

bool OutputFile::isStandardOutput(const std::string& path) {
  return std::find(kStandardOutput.begin(), kStandardOutput.end(), path) != kStandardOutput.end();
}

OutputFile::OutputFile(const std::string& path) {
  if (isStandardOutput(path)) return;
  refuseStoreFile(path);
  const auto target = placeOf(path);
  struct stat status {};
  if (::stat(target.c_str(), &status) == 0) mode_ = status.st_mode & 0777U;
  const SignalsHeld held;
  file_.emplace(target);
  guard_.emplace(file_->path());
}

void OutputFile::write(std::string_view bytes) {
  if (file_) return file_->write(bytes);
  std::cout.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  check(std::cout);
}

void OutputFile::commit() {
  if (!file_) {
    std::cout.flush();
    return check(std::cout);
  }
  if (mode_ != 0 && ::chmod(file_->path().c_str(), mode_) != 0) {
    throw std::system_error(errno, std::generic_category(), file_->path());
  }
  file_->commit();
  guard_.reset();
}

}  // namespace ox::program
