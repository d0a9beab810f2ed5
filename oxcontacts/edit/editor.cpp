#include "oxcontacts/edit/editor.hpp"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "oxcontacts/context.hpp"

namespace ox::program {
namespace {

[[noreturn]] void fail(const std::string& what) {
  throw CommandError(kFailed, what + ": " + std::strerror(errno));
}

std::string folderForFiles() {
  const char* folder = std::getenv("TMPDIR");
  return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

}  // namespace

EditedText::EditedText(const std::string& text) {
  constexpr int kEnding = 5;  // ".yaml", by which editors know what it is
  path_ = folderForFiles() + "/oxcontacts-XXXXXX.yaml";
  // For the user alone.
  const int file = ::mkstemps(path_.data(), kEnding);
  if (file < 0) fail("no file for the editor can be made in " + folderForFiles());
  ::close(file);
  try {
    write(text);
  } catch (...) {
    ::unlink(path_.c_str());
    throw;
  }
}

EditedText::~EditedText() {
  if (!isKept_) ::unlink(path_.c_str());
}

void EditedText::write(const std::string& text) {
  std::ofstream file(path_, std::ios::binary | std::ios::trunc);
  file << text;
  file.flush();
  if (!file) fail(path_);
}

const std::string& EditedText::keep() {
  isKept_ = true;
  return path_;
}

std::string EditedText::edit(const std::string& configured) {
  // Each may be a command with arguments, as other programs read the variables too.
  std::string script = "exec ${VISUAL:-${EDITOR:-$2}} \"$1\"";
  std::string shell = "sh";
  std::string option = "-c";
  std::string otherwise = configured.empty() ? kUsualEditor : configured;
  std::array<char*, 7> words = {shell.data(), option.data(),    script.data(), shell.data(),
                                path_.data(), otherwise.data(), nullptr};
  pid_t process = 0;
  errno = ::posix_spawn(&process, "/bin/sh", nullptr, nullptr, words.data(), environ);
  if (errno != 0) fail("the editor");
  int status = 0;
  while (::waitpid(process, &status, 0) < 0) {
    if (errno != EINTR) fail("the editor");
  }
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    throw CommandError(kFailed, "the editor ended with an error; nothing was changed");
  }
  std::ifstream file(path_, std::ios::binary);
  if (!file) fail(path_);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace ox::program
