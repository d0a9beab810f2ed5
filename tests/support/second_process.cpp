#include "tests/support/second_process.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <map>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace ox::support {
namespace {

constexpr const char* kMark = "--second-process";
constexpr int kCannotStart = 127;

std::map<std::string, SecondProcess::Function>& functions() {
  static auto& known = *new std::map<std::string, SecondProcess::Function>;
  return known;
}

std::vector<char*> pointersTo(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (const auto& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

// What is given as standard input lies in an unlinked file, so that a program which never reads it
// blocks nobody.
int inputFile(const std::string& input) {
  auto* file = std::tmpfile();
  if (file == nullptr) throw std::runtime_error("no temporary file");
  std::fwrite(input.data(), 1, input.size(), file);
  std::fflush(file);
  const int copy = ::dup(::fileno(file));
  std::fclose(file);
  ::lseek(copy, 0, SEEK_SET);
  return copy;
}

// Appends what the pipe holds; closes it at its end.
void drain(int& pipe, std::string& text) {
  std::array<char, 65536> buffer{};
  const auto count = ::read(pipe, buffer.data(), buffer.size());
  if (count > 0) {
    text.append(buffer.data(), static_cast<std::size_t>(count));
  } else if (count == 0 || errno != EINTR) {
    ::close(pipe);
    pipe = -1;
  }
}

}  // namespace

RunningProcess::RunningProcess(const std::vector<std::string>& command, const std::string& input,
                               const std::vector<std::string>& variables) {
  std::array<int, 2> output{};
  std::array<int, 2> errors{};
  if (::pipe2(output.data(), O_CLOEXEC) != 0 || ::pipe2(errors.data(), O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipe");
  }
  const int standardInput = inputFile(input);
  std::vector<std::string> environment = variables;
  for (char** entry = environ; *entry != nullptr; ++entry) environment.emplace_back(*entry);
  auto arguments = pointersTo(command);
  auto variablePointers = pointersTo(environment);

  id_ = ::fork();
  if (id_ < 0) throw std::runtime_error("no process");
  if (id_ == 0) {
    ::dup2(standardInput, STDIN_FILENO);
    ::dup2(output[1], STDOUT_FILENO);
    ::dup2(errors[1], STDERR_FILENO);
    ::execve(arguments[0], arguments.data(), variablePointers.data());
    ::_exit(kCannotStart);
  }
  ::close(standardInput);
  ::close(output[1]);
  ::close(errors[1]);
  outputPipe_ = output[0];
  errorPipe_ = errors[0];
}

RunningProcess::~RunningProcess() {
  if (!waited_) wait();
}

void RunningProcess::signal(int number) const {
  ::kill(id_, number);
}

bool RunningProcess::readSome() {
  std::array<pollfd, 2> waiting{{{outputPipe_, POLLIN, 0}, {errorPipe_, POLLIN, 0}}};
  if (outputPipe_ < 0 && errorPipe_ < 0) return false;
  if (::poll(waiting.data(), waiting.size(), -1) < 0) return errno == EINTR;
  if (waiting[0].revents != 0) drain(outputPipe_, result_.output);
  if (waiting[1].revents != 0) drain(errorPipe_, result_.errors);
  return true;
}

bool RunningProcess::waitForOutput(const std::string& text) {
  while (result_.output.find(text) == std::string::npos) {
    if (!readSome()) return false;
  }
  return true;
}

ProcessResult RunningProcess::wait() {
  if (waited_) return result_;
  while (readSome()) {
  }
  int status = 0;
  while (::waitpid(id_, &status, 0) < 0 && errno == EINTR) {
  }
  waited_ = true;
  result_.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result_;
}

ProcessResult runProcess(const std::vector<std::string>& command, const std::string& input,
                         const std::vector<std::string>& variables) {
  return RunningProcess(command, input, variables).wait();
}

SecondProcess::SecondProcess(std::string name, Function function) : name_(std::move(name)) {
  if (!functions().emplace(name_, std::move(function)).second) std::abort();
}

std::vector<std::string> SecondProcess::command(const std::vector<std::string>& arguments) const {
  std::vector<std::string> command{std::filesystem::read_symlink("/proc/self/exe").string(), kMark,
                                   name_};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return command;
}

ProcessResult SecondProcess::run(const std::vector<std::string>& arguments) const {
  return runProcess(command(arguments));
}

bool SecondProcess::isAskedFor(int argc, char** argv) {
  return argc > 2 && std::string(argv[1]) == kMark;
}

int SecondProcess::runAsked(int argc, char** argv) {
  const auto found = functions().find(argv[2]);
  if (found == functions().end()) return kCannotStart;
  try {
    const int code = found->second(std::vector<std::string>(argv + 3, argv + argc));
    std::fflush(stdout);
    return code;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}

}  // namespace ox::support
