#include "ox/sync/folder/card_file_writer.hpp"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "ox/base/replacement_file.hpp"
#include "ox/base/uuid.hpp"

namespace ox::sync {
namespace {

// Hidden, and of no ending of a card: no program takes it for one.
constexpr std::string_view kEnding = ".tmp";

bool isUnfinished(std::string_view name) {
  return name.starts_with('.') && name.ends_with(kEnding) && name.size() > kEnding.size() &&
         uuidFromText(name.substr(1, name.size() - 1 - kEnding.size())).has_value();
}

}  // namespace

// The lock tells that somebody still writes it: it ends with the process.
CardFileWriter::CardFileWriter(const CardFolder& folder)
    : folder_(folder),
      name_("." + uuidText(makeUuid()) + std::string(kEnding)),
      file_(::openat(folder.number(), name_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600)) {
  if (file_.number() < 0) fail(name_, errno);
  ::flock(file_.number(), LOCK_EX | LOCK_NB);
}

CardFileWriter::~CardFileWriter() {
  if (!isPut_) ::unlinkat(folder_.number(), name_.c_str(), 0);
}

void CardFileWriter::fail(const std::string& name, int code) const {
  throw std::system_error(code, std::generic_category(), folder_.pathOf(name));
}

void CardFileWriter::write(std::string_view text) {
  while (!text.empty()) {
    const auto written = ::write(file_.number(), text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) fail(name_, errno);
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

// Where the file system knows no such modes, the file is as it makes files.
void CardFileWriter::setMode(unsigned mode) {
  ::fchmod(file_.number(), mode & 0777);
}

void CardFileWriter::finish() {
  if (::fsync(file_.number()) != 0) fail(name_, errno);
}

// Some file systems cannot rename without replacing; a second name for the file does the same.
bool CardFileWriter::putWhereNothingIs(const std::string& name) {
  finish();
  const int folder = folder_.number();
  if (::renameat2(folder, name_.c_str(), folder, name.c_str(), RENAME_NOREPLACE) == 0) {
    isPut_ = true;
    return true;
  }
  const bool isUnknown = errno == EINVAL || errno == ENOSYS || errno == EOPNOTSUPP;
  if (isUnknown && ::linkat(folder, name_.c_str(), folder, name.c_str(), 0) == 0) return true;
  if (errno != EEXIST) fail(name, errno);
  return false;
}

void CardFileWriter::putInPlaceOf(const std::string& name) {
  finish();
  const int folder = folder_.number();
  if (::renameat(folder, name_.c_str(), folder, name.c_str()) != 0) fail(name, errno);
  isPut_ = true;
}

std::string CardFileWriter::etag(std::string_view text) const {
  struct stat status {};
  if (::fstat(file_.number(), &status) != 0) fail(name_, errno);
  return etagOf(factsOf(status), text);
}

void CardFileWriter::sweep(const CardFolder& folder) {
  for (const auto& name : folder.names()) {
    if (!isUnfinished(name) || !ReplacementFile::isAbandoned(folder.pathOf(name))) continue;
    ::unlinkat(folder.number(), name.c_str(), 0);
  }
}

}  // namespace ox::sync
