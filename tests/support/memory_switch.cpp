// Takes the place of the functions that allocate, in a process that loads it with LD_PRELOAD, and
// refuses the allocation that the environment names, whichever library asks for it.
#include "tests/support/memory_switch.hpp"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <new>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

namespace words = ox::support::memory_switch;
using Main = int (*)(int, char**, char**);

// Plain values: what stands here is used before any static initialiser has run.
std::atomic<bool> counting{false};
std::atomic<long> refusedAt{0};
std::atomic<long> allocations{0};
bool goesOn = false;
const char* mark = nullptr;
Main realMain = nullptr;

// Whether this thread is within an operator new, whose malloc was counted already. It lies where
// reaching it allocates nothing.
__attribute__((tls_model("initial-exec"))) thread_local bool isWithinNew = false;

bool isRefused() {
  if (!counting || isWithinNew) return false;
  const auto number = ++allocations;
  if (number != refusedAt && (!goesOn || number < refusedAt)) return false;
  const auto made = ::syscall(SYS_openat, AT_FDCWD, mark, O_CREAT | O_WRONLY, 0600);
  ::syscall(SYS_close, made);
  errno = ENOMEM;
  return true;
}

template <typename Function>
Function* real(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

template <typename Make>
void* newOrThrow(Make make) {
  if (isRefused()) throw std::bad_alloc();
  isWithinNew = true;
  void* memory = make();
  isWithinNew = false;
  return memory;
}

int mainCounted(int argc, char** argv, char** environment) {
  const auto* at = std::getenv(words::kAt);
  const auto* on = std::getenv(words::kOn);
  mark = std::getenv(words::kMark);
  refusedAt = at == nullptr ? 0 : std::atol(at);
  goesOn = on != nullptr && *on != '\0';
  ::alarm(words::kSeconds);
  counting = mark != nullptr;
  const auto code = realMain(argc, argv, environment);
  counting = false;
  return code;
}

}  // namespace

extern "C" {

int __libc_start_main(Main main, int argc, char** argv, void (*init)(), void (*fini)(),
                      void (*ends)(), void* stack) {
  using Start = int(Main, int, char**, void (*)(), void (*)(), void (*)(), void*);
  realMain = main;
  return real<Start>("__libc_start_main")(mainCounted, argc, argv, init, fini, ends, stack);
}

void* malloc(size_t size) {
  static auto* const make = real<void*(size_t)>("malloc");
  return isRefused() ? nullptr : make(size);
}

void* realloc(void* memory, size_t size) {
  static auto* const make = real<void*(void*, size_t)>("realloc");
  return isRefused() ? nullptr : make(memory, size);
}

int posix_memalign(void** memory, size_t alignment, size_t size) {
  static auto* const make = real<int(void**, size_t, size_t)>("posix_memalign");
  return isRefused() ? ENOMEM : make(memory, alignment, size);
}

void* calloc(size_t count, size_t size) {
  static auto* const make = real<void*(size_t, size_t)>("calloc");
  return isRefused() ? nullptr : make(count, size);
}

}  // extern "C"

void* operator new(std::size_t size) {
  static auto* const make = real<void*(std::size_t)>("_Znwm");
  return newOrThrow([&] { return make(size); });
}

void* operator new[](std::size_t size) {
  static auto* const make = real<void*(std::size_t)>("_Znam");
  return newOrThrow([&] { return make(size); });
}

void* operator new(std::size_t size, const std::nothrow_t& nothrow) noexcept {
  static auto* const make = real<void*(std::size_t, const std::nothrow_t&)>("_ZnwmRKSt9nothrow_t");
  if (isRefused()) return nullptr;
  isWithinNew = true;
  void* memory = make(size, nothrow);
  isWithinNew = false;
  return memory;
}
