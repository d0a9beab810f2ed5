#pragma once

#include "ox/base/export.hpp"
#include "ox/platform/store/values/act_ids.hpp"

namespace ox {

// Work of one thread that is saved as one commit or not at all. While it lives, what its thread
// creates through the container database (additions and links) is not committed at once but waits
// for the save, and every change that the thread makes is marked as the act's. A save on that
// thread writes nobody's changes and the act's in one transaction; a save on another thread writes
// nothing of it. What is not saved at its end is taken back, and nothing else is. Nested in another
// one it is a part of that: joinOuter hands over what it did. Lives on the stack of its thread.
class OX_EXPORT RunningAct {
 public:
  RunningAct();
  RunningAct(const RunningAct&) = delete;
  RunningAct& operator=(const RunningAct&) = delete;
  ~RunningAct();

  // Hands what was done so far to the act around this one; false when there is none.
  bool joinOuter();

  // To whom a change belongs that this thread makes now; of a record that an act has created, who
  // that was: an act of another thread keeps it, for its record cannot be written without it.
  static ActId ownerOfChange(ActId creator = kNobodysAct);
  // Whose changes a save on this thread writes and a revert takes back: nobody's, and those of the
  // acts that run on it.
  static ActIds ofThread();

  // While it lives, what its thread does is in no act: for callbacks of a host.
  class OX_EXPORT Pause {
   public:
    Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;
    ~Pause();

   private:
    RunningAct* paused_;
  };

 private:
  RunningAct* outer_;
  ActId id_;
  ActIds acts_;  // this one, and those that joined it
};

}  // namespace ox
