#include "oxcontacts/interruption.hpp"

#include <array>
#include <csignal>
#include <unistd.h>
#include <utility>

#include "oxcontacts/context.hpp"

namespace ox::program {
namespace {

constexpr std::array kEndings = {SIGINT, SIGTERM, SIGHUP, SIGPIPE};

// All that the handler touches.
struct State {
  std::array<std::atomic<const char*>, 8> files{};
  std::atomic<bool> sparesFirst{false};
  std::atomic<bool> interrupted{false};
};
static_assert(std::atomic<const char*>::is_always_lock_free);
static_assert(std::atomic<bool>::is_always_lock_free);

State& state() {
  static constinit State state;
  return state;
}

void end(int signal) {
  if (signal == SIGINT && state().sparesFirst.exchange(false)) {
    state().interrupted = true;
    return;
  }
  for (const auto& file : state().files) {
    if (const char* path = file.load()) ::unlink(path);
  }
  if (signal == SIGINT) ::_exit(kInterrupted);
  ::signal(signal, SIG_DFL);
  ::raise(signal);
}

// Without SA_RESTART: whoever waits for input looks whether it was interrupted.
void install() {
  for (const int signal : kEndings) {
    struct sigaction action {};
    // What the parent process wants ignored stays so.
    if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) continue;
    action.sa_handler = end;
    action.sa_flags = 0;
    ::sigaction(signal, &action, nullptr);
  }
}

}  // namespace

GoesWhenInterrupted::GoesWhenInterrupted(std::string path) : path_(std::move(path)) {
  auto& files = state().files;
  const char* empty = nullptr;
  while (slot_ < files.size() && !files[slot_].compare_exchange_strong(empty, path_.c_str())) {
    empty = nullptr;
    ++slot_;
  }
  install();
}

GoesWhenInterrupted::~GoesWhenInterrupted() {
  if (slot_ < state().files.size()) state().files[slot_] = nullptr;
}

SignalsHeld::SignalsHeld() {
  sigset_t held;
  ::sigemptyset(&held);
  for (const int signal : kEndings) ::sigaddset(&held, signal);
  ::pthread_sigmask(SIG_BLOCK, &held, &before_);
}

SignalsHeld::~SignalsHeld() {
  ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

const std::atomic<bool>& firstInterruption() {
  state().sparesFirst = true;
  install();
  return state().interrupted;
}

}  // namespace ox::program
