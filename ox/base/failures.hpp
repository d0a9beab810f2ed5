#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/base/failure.hpp"

// How somebody finds out what went wrong. The operations that hosts call report no errors: they
// give an empty answer and notice() the failure here. Whoever must not report a success that was
// none opens a Watch for the scope of the work.

namespace ox::failures {

// What a watch keeps of each failure is bounded; all of them are counted.
inline constexpr std::size_t kKept = 256;

struct Counts {
  std::uint64_t refusals = 0;  // asked for something that is not allowed; nothing changed
  std::uint64_t failures = 0;  // a file or the system failed; the answer was empty

  bool operator==(const Counts&) const = default;
};

class Log;

// Collects what goes wrong in its own scope: on the thread that opened it, and on those that the
// library starts for this work, also when they run on after the call that started them. Threads
// that do other work are not seen. Watches nest: an inner one sees its own part, the outer ones see
// that too. Lives on the stack of the thread that opened it; may be asked from any thread.
class OX_EXPORT Watch {
 public:
  // OwnWork is for a library that asks how far its own steps came: it does not see what happens in
  // an Aside, and nobody has been told of what only such a watch has seen.
  enum class Over : std::uint8_t { Everything, OwnWork };

  explicit Watch(Over over = Over::Everything);
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;
  ~Watch();

  Counts counts() const;
  // Nothing was refused and nothing failed.
  bool isClear() const { return counts() == Counts(); }
  bool hasFailures() const;
  // The first kKept refusals and failures, in the order in which they were noticed.
  std::vector<Failure> all() const;
  // The one that was noticed last.
  std::optional<Failure> last() const;
  // Its reason; empty when there is none.
  std::string lastReason() const;
  // Failures (the first kKept) that were noticed while nobody watched, on whatever thread, since a
  // watch over everything was last opened. This watch alone tells of them, and counts none of them
  // as its own. An empty list that is kept, of a store that could not be read, is explained here.
  const std::vector<Failure>& earlier() const { return earlier_; }

 private:
  std::shared_ptr<Log> log_;
  std::vector<Failure> earlier_;
};

// Tells every watch that is open for the work of this thread. Counted even when there is no memory
// to keep the words.
OX_EXPORT void notice(FailureKind kind, std::string_view reason,
                      std::string_view subject = {}) noexcept;
// The same of what was thrown, by its kind.
OX_EXPORT void notice(const std::exception& error) noexcept;
inline void notice(const Failure& failure) noexcept {
  notice(failure.kind, failure.reason, failure.subject);
}
inline void noticeRefusal(std::string_view reason, std::string_view subject = {}) noexcept {
  notice(FailureKind::Refused, reason, subject);
}

// While it lives, what its thread notices passes by the innermost watch over OwnWork, and reaches
// those around that: for callbacks of a host, whose failures are not those of the work.
class OX_EXPORT Aside {
 public:
  Aside();
  Aside(const Aside&) = delete;
  Aside& operator=(const Aside&) = delete;
  ~Aside();

 private:
  Log* before_;
};

// The watches of the thread that makes it, to be carried to another one that works for it.
class OX_EXPORT Carried {
 public:
  Carried();

  // While it lives, its thread is watched by what was carried, and by nobody else.
  class OX_EXPORT Scope {
   public:
    explicit Scope(const Carried& carried);
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
    ~Scope();

   private:
    std::shared_ptr<Log> log_;
    Log* before_;
  };

 private:
  std::shared_ptr<Log> log_;
};

// The task, to be run on another thread and watched as it would be on this one.
template <typename Task>
auto watched(Task task) {
  return [carried = Carried(), task = std::move(task)] {
    const Carried::Scope scope(carried);
    return task();
  };
}

}  // namespace ox::failures
