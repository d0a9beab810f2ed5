#include "tests/kills/allowed_states.hpp"

#include <filesystem>
#include <gtest/gtest.h>
#include <utility>

#include "ox/OxAddressBookSDK/tags/tag_file.hpp"
#include "tests/faults/store_state.hpp"
#include "tests/kills/killed_run.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::kills {
namespace {

std::string problems() {
  const auto& environment = support::StoreEnvironment::instance();
  auto text = faults::problemsOf(environment.contactStore().string());
  const auto tags = environment.tagStore().string();
  if (!std::filesystem::exists(tags)) return text;
  for (const auto& problem : TagFile(tags).problems()) text += problem + "\n";
  return text;
}

}  // namespace

AllowedStates::AllowedStates(Look look) : look_(std::move(look)) {
  add();
}

std::size_t AllowedStates::expectLeft(std::size_t first, std::size_t last) const {
  auto state = look_();
  EXPECT_EQ(problems(), "");
  EXPECT_TRUE(anyHas(&ReadableState::contacts, state.contacts, first, last)) << "no such contacts";
  auto found = find(state, first, last);
  if (found > last) {
    const auto next = runAlive(program_tests::programCommand({"books"}));
    EXPECT_EQ(next.exitCode, 0) << next.errors;
    EXPECT_EQ(problems(), "");
    state = look_();
    found = find(state, first, last);
  }
  EXPECT_LE(found, last) << "left:\n"
                         << state.text() << "allowed first:\n"
                         << states_.at(first).text() << "allowed last:\n"
                         << states_.at(last).text();
  return found;
}

void AllowedStates::expectContactsLeft(std::size_t first, std::size_t last) const {
  EXPECT_EQ(problems(), "");
  EXPECT_TRUE(anyHas(&ReadableState::contacts, look_().contacts, first, last))
      << "no such contacts";
}

bool AllowedStates::anyHas(std::string ReadableState::*part, const std::string& text,
                           std::size_t first, std::size_t last) const {
  for (auto i = first; i <= last; ++i) {
    if (states_.at(i).*part == text) return true;
  }
  return false;
}

std::size_t AllowedStates::find(const ReadableState& state, std::size_t first,
                                std::size_t last) const {
  for (auto i = last + 1; i > first; --i) {
    if (states_.at(i - 1).text() == state.text()) return i - 1;
  }
  return last + 1;
}

}  // namespace ox::kills
