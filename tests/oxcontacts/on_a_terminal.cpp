#include "tests/oxcontacts/on_a_terminal.hpp"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include "tests/oxcontacts/program.hpp"

namespace ox::program_tests {

support::ProcessResult runOnATerminal(const std::vector<std::string>& arguments,
                                      const std::vector<int>& streams, const std::string& answer) {
  const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
  EXPECT_EQ(::grantpt(terminal), 0);
  EXPECT_EQ(::unlockpt(terminal), 0);
  const int side = ::open(::ptsname(terminal), O_RDWR | O_NOCTTY);
  termios settings{};
  ::tcgetattr(side, &settings);
  ::cfmakeraw(&settings);
  ::tcsetattr(side, TCSANOW, &settings);
  const auto command = programCommand(arguments);
  std::vector<char*> words;
  words.reserve(command.size() + 1);
  for (const auto& word : command) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  const pid_t child = ::fork();
  if (child == 0) {
    for (const int stream : streams) ::dup2(side, stream);
    ::execv(words[0], words.data());
    ::_exit(127);
  }
  ::close(side);
  EXPECT_EQ(::write(terminal, answer.data(), answer.size()), static_cast<ssize_t>(answer.size()));
  support::ProcessResult result;
  std::array<char, 4096> buffer;
  // A terminal that nobody has open any more answers with an error.
  for (ssize_t got = 0; (got = ::read(terminal, buffer.data(), buffer.size())) > 0;) {
    result.output.append(buffer.data(), static_cast<std::size_t>(got));
  }
  ::close(terminal);
  int status = 0;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status));
  result.exitCode = WEXITSTATUS(status);
  return result;
}

}  // namespace ox::program_tests
