#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/second_process.hpp"
#include "tests/support/sequence.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::support {
namespace {

const SecondProcess tellsItsStore("tellsItsStore", [](const auto& arguments) {
  std::printf("%s %s", std::getenv("OX_CONTACT_STORE"), arguments.at(0).c_str());
  return 7;
});

const SecondProcess waitsForever("waitsForever", [](const auto&) {
  std::puts("ready");
  std::fflush(stdout);
  for (;;) ::pause();
  return 0;
});

TEST(Sequence, PrintsExactDoublesAndMarksTheFinishedReport) {
  Sequence sequence;
  const auto report = sequence.callback();
  report(20, false);
  report(static_cast<double>(100.0F / 3), false);
  report(100, true);
  EXPECT_EQ(sequence.text(), "20 33.33333206176758 100!");
}

TEST(SecondProcess, RunsInTheFolderOfTheFirstAndTellsHowItEnded) {
  const auto result = tellsItsStore.run({"x y"});
  EXPECT_EQ(result.exitCode, 7);
  EXPECT_EQ(result.output, temporaryPath("contacts.db").string() + " x y");
  EXPECT_TRUE(std::filesystem::exists(temporaryPath("home")));
}

TEST(SecondProcess, CanBeKilledOnceItSaysThatItIsReady) {
  RunningProcess process(waitsForever.command());
  ASSERT_TRUE(process.waitForOutput("ready"));
  process.signal(SIGKILL);
  EXPECT_EQ(process.wait().exitCode, 128 + SIGKILL);
  EXPECT_EQ(runProcess({"/bin/cat"}, "given").output, "given");
}

}  // namespace
}  // namespace ox::support
