#include "ox/sync/http/secret_command.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {
namespace {

constexpr int kTurn = 200;  // milliseconds

[[noreturn]] void failed(const std::string& command, const std::string& how) {
  throw RemoteError(RemoteFailure::Login, shownCommand(command) + " " + how);
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { close(); }

  int number() const { return number_; }
  void close() {
    if (number_ >= 0) ::close(std::exchange(number_, -1));
  }

 private:
  int number_;
};

bool hasTerminal() {
  const Descriptor terminal(::open("/dev/tty", O_RDONLY | O_CLOEXEC | O_NOCTTY));
  return terminal.number() >= 0;
}

// A process of ours. One that is still there at the end is asked to go, and waited for. Without a
// terminal so is all that it has started; with one the terminal's own interruption reaches them,
// and whoever asks the user there must not be in another group.
class Child {
 public:
  Child(const std::string& command, int output) : isOwnGroup_(!hasTerminal()) {
    std::string shell = "sh";
    std::string option = "-c";
    std::string script = command;
    std::array<char*, 4> words = {shell.data(), option.data(), script.data(), nullptr};
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    if (isOwnGroup_) ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    const int error = ::posix_spawn(&id_, "/bin/sh", &actions, &attributes, words.data(), environ);
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    if (error != 0) failed(command, std::string("cannot be run: ") + std::strerror(error));
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() {
    if (hasEnded_) return;
    signal(SIGTERM);
    for (int turn = 0; turn < 20 && isAnyThere(); ++turn) ::poll(nullptr, 0, 50);
    if (!isAnyThere()) return;
    signal(SIGKILL);
    if (!hasEnded_) wait(0);
  }

  bool hasEnded() { return hasEnded_ || wait(WNOHANG); }
  // Of one that has ended.
  bool isGood() const { return WIFEXITED(status_) && WEXITSTATUS(status_) == 0; }
  std::string howItEnded() const {
    if (WIFSIGNALED(status_)) return "was ended by signal " + std::to_string(WTERMSIG(status_));
    return "failed (exit code " + std::to_string(WEXITSTATUS(status_)) + ")";
  }

 private:
  void signal(int number) const { ::kill(isOwnGroup_ ? -id_ : id_, number); }
  bool isAnyThere() {
    if (!hasEnded()) return true;
    return isOwnGroup_ && ::kill(-id_, 0) == 0;
  }
  bool wait(int options) {
    auto ended = ::waitpid(id_, &status_, options);
    while (ended < 0 && errno == EINTR) ended = ::waitpid(id_, &status_, options);
    hasEnded_ = ended != 0;
    return hasEnded_;
  }

  bool isOwnGroup_;
  pid_t id_ = -1;
  int status_ = -1;  // nobody knows: a host that lets no child be waited for
  bool hasEnded_ = false;
};

bool hasSomething(int descriptor, int milliseconds) {
  pollfd wanted{descriptor, POLLIN, 0};
  return ::poll(&wanted, 1, milliseconds) > 0;
}

// Reads what is there; false at the end of it.
bool readSome(int descriptor, std::span<char> buffer, std::size_t& size) {
  std::array<char, 4096> part{};
  const auto count = ::read(descriptor, part.data(), part.size());
  if (count < 0) return errno == EINTR;
  const auto taken = std::min(static_cast<std::size_t>(count), buffer.size() - size);
  std::copy_n(part.data(), taken, buffer.data() + size);
  ::explicit_bzero(part.data(), part.size());
  size += taken;
  return count > 0;
}

// Says once what is being waited for, and waits for somebody who types a passphrase, but not for
// ever: others wait for the login meanwhile.
class Patience {
 public:
  Patience(const std::string& command, const WireHooks& hooks) : command_(command), hooks_(hooks) {}

  void check() {
    const auto time = Clock::now() - start_;
    if (time > kMost) failed(command_, "was ended: it gave nothing for 5 minutes");
    if (isTold_ || time < kFirstWord) return;
    isTold_ = true;
    if (hooks_.waiting) hooks_.waiting(shownCommand(command_) + " (5 s)");
  }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::seconds kFirstWord{5};
  static constexpr std::chrono::minutes kMost{5};

  const std::string& command_;
  const WireHooks& hooks_;
  const Clock::time_point start_ = Clock::now();
  bool isTold_ = false;
};

}  // namespace

std::size_t outputOfCommand(const std::string& command, const WireHooks& hooks,
                            std::span<char> buffer) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
    failed(command, std::string("cannot be run: ") + std::strerror(errno));
  }
  const Descriptor output(ends[0]);
  Descriptor input(ends[1]);
  Child child(command, input.number());
  input.close();
  std::size_t size = 0;
  bool isOpen = true;
  Patience patience(command, hooks);
  // What it leaves running in the background may keep the pipe open for ever: its own end counts.
  for (bool hasEnded = false; !hasEnded || isOpen;) {
    if (hooks.isStopped && hooks.isStopped()) {
      throw RemoteError(RemoteFailure::Stopped, "stopped while the password was asked for");
    }
    patience.check();
    hasEnded = child.hasEnded();
    if (isOpen && hasSomething(output.number(), hasEnded ? 0 : kTurn)) {
      isOpen = readSome(output.number(), buffer, size);
    } else if (hasEnded) {
      break;
    } else if (!isOpen) {
      ::poll(nullptr, 0, 10);
    }
  }
  if (!child.isGood()) failed(command, child.howItEnded());
  return size;
}

std::string shownCommand(const std::string& command) {
  const auto start = command.find_first_not_of(" \t\n");
  if (start == std::string::npos) return "the password command";
  const auto word = command.substr(start, command.find_first_of(" \t\n", start) - start);
  // A variable that is set for the command, or what stands in quotes, may hold what nobody is to
  // see.
  const bool isPlain = std::all_of(word.begin(), word.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("/._-+~").find(c) != std::string_view::npos;
  });
  return isPlain ? "the password command '" + word + "'" : "the password command";
}

}  // namespace ox::sync
