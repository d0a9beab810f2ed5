#include "oxcontacts/output_file.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <iostream>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "ox/base/planted.hpp"
#include "ox/base/store_location.hpp"
#include "oxcontacts/context.hpp"
#include "oxcontacts/files.hpp"
#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {
namespace {

constexpr std::array<std::string_view, 4> kStandardOutput = {"-", "/dev/stdout", "/dev/fd/1",
                                                             "/proc/self/fd/1"};

constexpr std::array<std::string_view, 3> kStandardError = {"/dev/stderr", "/dev/fd/2",
                                                            "/proc/self/fd/2"};

template <typename Names>
bool isAmong(const Names& names, const std::string& path) {
  return std::find(names.begin(), names.end(), path) != names.end();
}

[[noreturn]] void fail(const std::string& path) {
  throw std::system_error(errno, std::generic_category(), path);
}

int openStream(const std::string& path) {
  const int stream = isAmong(kStandardError, path)
                         ? ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0)
                         : ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
  if (stream < 0) fail(path);
  return stream;
}

void check(const std::ostream& output) {
  // The end of the program says why.
  if (!output) throw CommandError(kFailed, "");
}

}  // namespace

bool OutputFile::isStandardOutput(const std::string& path) {
  return isAmong(kStandardOutput, path);
}

// The error stream may lead into a file that others write too.
bool OutputFile::isStream(const std::string& path) {
  if (isAmong(kStandardError, path)) return true;
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

OutputFile::OutputFile(const std::string& path) : path_(path) {
  if (isStandardOutput(path)) {
    isTerminal_ = ::isatty(STDOUT_FILENO) != 0;
    return;
  }
  if (!isAmong(kStandardError, path)) refusePlanted(path);
  if (isStream(path)) {
    stream_ = openStream(path);
    isTerminal_ = ::isatty(stream_) != 0;
    return;
  }
  refuseStoreFile(path);
  const auto target = placeOf(path);
  struct stat status {};
  const bool isThere = ::stat(target.c_str(), &status) == 0;
  if (isThere && status.st_uid == ::geteuid()) mode_ = status.st_mode & 0777U;
  const SignalsHeld held;
  file_.emplace(target);
  guard_.emplace(file_->path());
}

OutputFile::~OutputFile() {
  if (stream_ >= 0) ::close(stream_);
}

void OutputFile::writeToStream(std::string_view bytes) {
  while (!bytes.empty()) {
    const auto written = ::write(stream_, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) fail(path_);
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

void OutputFile::write(std::string_view bytes) {
  if (file_) return file_->write(bytes);
  if (!isTerminal_) return writeOut(bytes);
  for (const char byte : bytes) {
    if (byte != '\n') {
      line_ += byte;
      continue;
    }
    if (line_.ends_with('\r')) line_.pop_back();
    writeOut(terminalLines(line_) + '\n');
    line_.clear();
  }
}

void OutputFile::writeOut(std::string_view bytes) {
  if (stream_ >= 0) return writeToStream(bytes);
  std::cout.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  check(std::cout);
}

void OutputFile::commit() {
  if (isTerminal_) writeOut(terminalLines(line_));
  if (stream_ >= 0) return;
  if (!file_) {
    std::cout.flush();
    return check(std::cout);
  }
  if (mode_ != 0 && ::chmod(file_->path().c_str(), mode_) != 0) {
    fail(file_->path());
  }
  file_->commit();
  guard_.reset();
}

std::string OutputFile::commitBeside() {
  auto beside = placeOf(path_) + ".partial";
  refuseStoreFile(beside);
  file_->retarget(beside);
  commit();
  return beside;
}

}  // namespace ox::program
