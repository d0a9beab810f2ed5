#pragma once

#include <vector>

#include "ox/OxAddressBookSDK/tags/held_tags.hpp"
#include "ox/base/export.hpp"

namespace ox {

// While it lives, what its thread changes of tags is held in memory instead of being written: the
// whole process sees it, no other one does. Whoever holds has it written with the contacts of the
// same act (ox/OxMacAddressBookSDK/ground/tag_acts.hpp); what was not is forgotten at the end.
// Lives on the stack of its thread; may be nested.
class OX_EXPORT TagHold {
 public:
  TagHold();
  TagHold(const TagHold&) = delete;
  TagHold& operator=(const TagHold&) = delete;
  ~TagHold();

  // Hands what was changed to the hold around this one; false when there is none.
  bool joinOuter();

  static bool isOnThread();
  // Of all holds of this thread.
  static std::vector<TagChange> changesOfThread();
  // They are written, and are to be read where they were written to.
  static void forgetThose();

  // While it lives, what its thread changes is not held: for callbacks of a host.
  class OX_EXPORT Pause {
   public:
    Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;
    ~Pause();

   private:
    TagHold* paused_;
  };

 private:
  friend class TagStore;

  // The innermost one of this thread; null when there is none.
  static TagHold* current();
  bool isOnThisThread() const;

  TagHold* outer_;
  HeldTags tags_;  // under the lock of the tag store
};

}  // namespace ox
