#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "tests/kills/readable_state.hpp"

namespace ox::kills {

// The states that work on the test's store goes through, one for each of its whole acts, and the
// question which of them was left when the work was cut off.
class AllowedStates {
 public:
  using Look = std::function<ReadableState()>;

  // How the state is looked at. The first one is that of now.
  explicit AllowedStates(Look look);

  // The state of now comes next.
  void add() { states_.push_back(look_()); }
  std::size_t count() const { return states_.size(); }

  // Expects a sound store in one of the states from that number to that one, both included.
  // Contacts and tags lie in two files: where a kill has come between, the contacts must be in one
  // of the states, and the next command that looks at tags brings these to where the contacts are.
  // The result is the number of the state, the latest of equal ones.
  std::size_t expectLeft(std::size_t first, std::size_t last) const;
  // The same of the contacts alone.
  void expectContactsLeft(std::size_t first, std::size_t last) const;

 private:
  bool anyHas(std::string ReadableState::*part, const std::string& text, std::size_t first,
              std::size_t last) const;
  // One past the last when there is no such state.
  std::size_t find(const ReadableState& state, std::size_t first, std::size_t last) const;

  Look look_;
  std::vector<ReadableState> states_;
};

}  // namespace ox::kills
