#include "ox/sync/http/secret.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <span>
#include <sys/stat.h>
#include <unistd.h>

#include "ox/sync/http/secret_command.hpp"
#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {
namespace {

// Where a secret is read to. One place, never moved, overwritten at the end.
class Buffer {
 public:
  Buffer() = default;
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;
  ~Buffer() { ::explicit_bzero(bytes_.data(), bytes_.size()); }

  std::span<char> free() { return std::span(bytes_).subspan(size_); }
  void add(std::size_t count) { size_ += count; }
  std::string_view firstLine() const {
    const std::string_view all(bytes_.data(), size_);
    auto line = all.substr(0, all.find('\n'));
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
  }

 private:
  std::array<char, 65536> bytes_{};  // tokens have grown to several thousand
  std::size_t size_ = 0;
};

class File {
 public:
  explicit File(const std::string& path)
      : descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {
    if (descriptor_ >= 0) return;
    throw RemoteError(RemoteFailure::Usage,
                      "the password file " + path + " cannot be read: " + std::strerror(errno));
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() { ::close(descriptor_); }

  struct stat state() const {
    struct stat state {};
    if (::fstat(descriptor_, &state) != 0) state.st_mode = 0;
    return state;
  }
  void readInto(Buffer& buffer) const {
    while (!buffer.free().empty()) {
      const auto count = ::read(descriptor_, buffer.free().data(), buffer.free().size());
      if (count < 0 && errno == EINTR) continue;
      if (count <= 0) return;
      buffer.add(static_cast<std::size_t>(count));
    }
  }

 private:
  int descriptor_;
};

enum class Others : bool { MayRead, MayNot };

void readFile(const std::string& path, Others others, Buffer& buffer) {
  const File file(path);
  const auto state = file.state();
  if (!S_ISREG(state.st_mode)) {
    throw RemoteError(RemoteFailure::Usage, "the password file " + path + " is no plain file");
  }
  if (others == Others::MayNot &&
      (state.st_uid != ::geteuid() || (state.st_mode & (S_IRWXG | S_IRWXO)) != 0)) {
    throw RemoteError(RemoteFailure::Usage, "the password file " + path +
                                                " is open to others; make it yours alone: chmod "
                                                "600 " +
                                                path);
  }
  file.readInto(buffer);
}

// The service manager guards the folder; whose the files in it are is its own matter.
std::string credentialPath(const std::string& name) {
  const char* folder = std::getenv("CREDENTIALS_DIRECTORY");
  if (folder == nullptr || *folder == '\0') {
    throw RemoteError(RemoteFailure::Usage,
                      "there are no credentials here: CREDENTIALS_DIRECTORY is not set");
  }
  if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos) {
    throw RemoteError(RemoteFailure::Usage, "'" + name + "' is no name of a credential");
  }
  return std::string(folder) + "/" + name;
}

std::string described(const PasswordSource& source) {
  switch (source.kind) {
    case PasswordSource::Kind::None:
      break;
    case PasswordSource::Kind::File:
      return "the password file " + source.text;
    case PasswordSource::Kind::Credential:
      return "the credential " + source.text;
    case PasswordSource::Kind::Command:
    case PasswordSource::Kind::BearerCommand:
      return shownCommand(source.text);
  }
  return {};
}

// libcurl takes texts that end at a zero, and a header ends at a line.
bool isUsable(std::string_view secret) {
  return std::none_of(secret.begin(), secret.end(), [](char c) {
    return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F;
  });
}

}  // namespace

Secret::~Secret() {
  ::explicit_bzero(text_.data(), text_.size());
}

std::unique_ptr<const Secret> readSecret(const PasswordSource& source, const WireHooks& hooks) {
  const auto buffer = std::make_unique<Buffer>();
  switch (source.kind) {
    case PasswordSource::Kind::None:
      return nullptr;
    case PasswordSource::Kind::Command:
    case PasswordSource::Kind::BearerCommand:
      buffer->add(outputOfCommand(source.text, hooks, buffer->free()));
      break;
    case PasswordSource::Kind::File:
      readFile(source.text, Others::MayNot, *buffer);
      break;
    case PasswordSource::Kind::Credential:
      readFile(credentialPath(source.text), Others::MayRead, *buffer);
      break;
  }
  const auto line = buffer->firstLine();
  if (line.empty()) {
    throw RemoteError(RemoteFailure::Login, described(source) + " gives an empty first line");
  }
  if (!isUsable(line)) {
    throw RemoteError(RemoteFailure::Login, described(source) + " gives control characters");
  }
  return std::make_unique<const Secret>(line);
}

}  // namespace ox::sync
