#include "ox/base/failures.hpp"

#include <atomic>
#include <cassert>
#include <cstddef>
#include <mutex>
#include <new>
#include <string>

namespace ox::failures {
namespace {

Failure made(FailureKind kind, std::string_view reason, std::string_view subject) {
  return {kind, std::string(reason), std::string(subject)};
}

}  // namespace

// What a watch has seen. Shared with the threads of the work, which may outlive the watch; reaches
// outwards to the logs of the watches around it. Safe from any thread.
class Log : public std::enable_shared_from_this<Log> {
 public:
  Log(Watch::Over over, std::shared_ptr<Log> outer) : over_(over), outer_(std::move(outer)) {}

  void add(FailureKind kind, std::string_view reason, std::string_view subject) noexcept {
    const std::lock_guard lock(mutex_);
    ++(kind == FailureKind::Refused ? refusals_ : failures_);
    last_ = Failure{kind, {}, {}};
    try {
      last_ = made(kind, reason, subject);
      if (kept_.size() < kKept) kept_.push_back(*last_);
    } catch (const std::bad_alloc&) {
      return;  // there is no room for the words; the count stands
    }
  }

  void close() { open_ = false; }
  bool isClosed() const { return !open_; }
  // Somebody will be told of what is added.
  bool tells() const { return over_ == Watch::Over::Everything && open_; }
  Watch::Over over() const { return over_; }
  Log* outer() const { return outer_.get(); }

  Counts counts() const { return {refusals_, failures_}; }
  bool hasFailures() const { return failures_ > 0; }
  std::vector<Failure> kept() const {
    const std::lock_guard lock(mutex_);
    return kept_;
  }
  std::optional<Failure> last() const {
    const std::lock_guard lock(mutex_);
    return last_;
  }

 private:
  const Watch::Over over_;
  const std::shared_ptr<Log> outer_;
  std::atomic<bool> open_ = true;
  std::atomic<std::uint64_t> refusals_ = 0;
  std::atomic<std::uint64_t> failures_ = 0;
  mutable std::mutex mutex_;
  std::vector<Failure> kept_;
  std::optional<Failure> last_;
};

namespace {

// The innermost watch of this thread, or null. Kept alive by the Watch or the Scope that put it
// there, which takes it away again in the reverse order.
thread_local Log* current = nullptr;

std::shared_ptr<Log> sharedCurrent() {
  return current != nullptr ? current->shared_from_this() : nullptr;
}

// What was noticed while nobody watched, until somebody does.
class Unwatched {
 public:
  static Unwatched& shared() {
    // In room of its own, for the first failure may be that there is no memory.
    alignas(Unwatched) static std::byte room[sizeof(Unwatched)];
    static auto& unwatched = *new (room) Unwatched;
    return unwatched;
  }

  void add(FailureKind kind, std::string_view reason, std::string_view subject) noexcept {
    const std::lock_guard lock(mutex_);
    try {
      if (failures_.size() < kKept) failures_.push_back(made(kind, reason, subject));
      any_ = true;
    } catch (const std::bad_alloc&) {
      return;  // there is no room to remember it
    }
  }

  std::vector<Failure> take() {
    if (!any_) return {};  // watches are opened often, and this is rare
    const std::lock_guard lock(mutex_);
    any_ = false;
    return std::exchange(failures_, {});
  }

 private:
  std::mutex mutex_;
  std::vector<Failure> failures_;
  std::atomic<bool> any_ = false;
};

}  // namespace

Watch::Watch(Over over) : log_(std::make_shared<Log>(over, sharedCurrent())) {
  if (over == Over::Everything) earlier_ = Unwatched::shared().take();
  current = log_.get();
}

Watch::~Watch() {
  assert(current == log_.get() && "a watch goes on the thread that opened it, the inner one first");
  log_->close();
  if (current != log_.get()) return;
  // An outer one that has gone before must not be left behind: its log goes with this one.
  do current = current->outer();
  while (current != nullptr && current->isClosed());
}

Counts Watch::counts() const {
  return log_->counts();
}

bool Watch::hasFailures() const {
  return log_->hasFailures();
}

std::vector<Failure> Watch::all() const {
  return log_->kept();
}

std::optional<Failure> Watch::last() const {
  return log_->last();
}

std::string Watch::lastReason() const {
  const auto failure = last();
  return failure ? failure->reason : std::string();
}

void notice(FailureKind kind, std::string_view reason, std::string_view subject) noexcept {
  bool told = false;
  for (auto* log = current; log != nullptr; log = log->outer()) {
    log->add(kind, reason, subject);
    told = told || log->tells();
  }
  // A refusal is the answer to one caller; a failure may be why others get empty ones.
  if (!told && kind != FailureKind::Refused) Unwatched::shared().add(kind, reason, subject);
}

void notice(const std::exception& error) noexcept {
  const auto* known = dynamic_cast<const FailureError*>(&error);
  notice(kindOf(error), error.what(), known != nullptr ? known->subject() : std::string_view());
}

Aside::Aside() : before_(current) {
  for (const auto* log = before_; log != nullptr; log = log->outer()) {
    if (log->over() == Watch::Over::Everything) continue;
    current = log->outer();
    return;
  }
}

Aside::~Aside() {
  current = before_;
}

Carried::Carried() : log_(sharedCurrent()) {}

Carried::Scope::Scope(const Carried& carried)
    : log_(carried.log_), before_(std::exchange(current, log_.get())) {}

Carried::Scope::~Scope() {
  current = before_;
}

}  // namespace ox::failures
