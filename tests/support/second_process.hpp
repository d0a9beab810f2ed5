#pragma once

#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace ox::support {

// How a process ended, and what it wrote.
struct ProcessResult {
  int exitCode = -1;  // 128 + the signal when one ended it
  std::string output;
  std::string errors;
};

// A process that was started and not yet waited for; waited for at the latest when this ends.
class RunningProcess {
 public:
  // Starts a program with these arguments (the first is its path), its standard input empty or what
  // is given. Variables are added to this process's own, as "NAME=value".
  explicit RunningProcess(const std::vector<std::string>& command, const std::string& input = {},
                          const std::vector<std::string>& variables = {});
  RunningProcess(const RunningProcess&) = delete;
  RunningProcess& operator=(const RunningProcess&) = delete;
  ~RunningProcess();

  pid_t id() const { return id_; }
  void signal(int number) const;
  // Blocks until it wrote that text to its output, or ended; false when it ended without.
  bool waitForOutput(const std::string& text);
  // Reads what it writes until it ends.
  ProcessResult wait();

 private:
  bool readSome();

  pid_t id_ = -1;
  int outputPipe_ = -1;
  int errorPipe_ = -1;
  bool waited_ = false;
  ProcessResult result_;
};

ProcessResult runProcess(const std::vector<std::string>& command, const std::string& input = {},
                         const std::vector<std::string>& variables = {});

// A function that runs in a second process of the same test program, on the same store. Made at
// namespace scope, so that the second process knows it too:
//
//   const SecondProcess addsAnn("addsAnn", [](const auto& arguments) { ...; return 0; });
//   ... addsAnn.run().exitCode
class SecondProcess {
 public:
  using Function = std::function<int(const std::vector<std::string>& arguments)>;

  SecondProcess(std::string name, Function function);

  ProcessResult run(const std::vector<std::string>& arguments = {}) const;
  // The command line that runs it, for a RunningProcess.
  std::vector<std::string> command(const std::vector<std::string>& arguments = {}) const;

  // For the test program's main: runs the function that the command line names, if it names one.
  static bool isAskedFor(int argc, char** argv);
  static int runAsked(int argc, char** argv);

 private:
  std::string name_;
};

}  // namespace ox::support
