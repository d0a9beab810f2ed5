#pragma once

#include <memory>

#include "ox/OxMacAddressBookSDK/ground/contacts_and_tags.hpp"
#include "ox/base/export.hpp"

namespace ox {

// Several steps that are one act: in the store as a whole, in one commit, or not at all, whoever
// looks and whenever the process ends. Without one, what a book creates is in the store at once and
// its values follow with the next save.
//
//   WholeAct act;
//   const auto ann = book->newPerson();
//   ann->setValue_byPropertyName(name, OxProPertyName);
//   book->addGroupByName("Friends")->addPersons({ann});
//   const bool isThere = act.save().contacts.done;
//
// Bound to the thread that made it, on whose stack it lives. Until the save, what the thread
// creates, changes, links, tags and removes is seen by this process and by no other one. A save on
// another thread writes nothing of it and a revert there takes nothing of it back; a save on its
// own thread, of whatever book, writes it. What is not saved at its end is taken back, and nothing
// that others have left unsaved goes with it; books then still hold persons in their caches that
// never came to be, as they hold removed ones, until the cache is emptied. Adding and removing
// accounts, replacing a contact of the container database, and imports are acts of their own and
// committed at once.
class OX_EXPORT WholeAct {
 public:
  WholeAct();
  WholeAct(const WholeAct&) = delete;
  WholeAct& operator=(const WholeAct&) = delete;
  ~WholeAct();

  // Writes what was done so far, and whatever nobody's act has left unsaved, in one durable commit.
  // When that fails nothing was written, a watch tells why, and it may be tried again. An act
  // within another one is a part of that: it hands over what was done, to be written by the save of
  // the outer one.
  SavedContactsAndTags save();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace ox
