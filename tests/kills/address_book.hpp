#pragma once

namespace ox::kills {

// Fills the test's store by the program with a small address book of every kind of thing: accounts,
// persons with values, pictures and tags, groups in a tree; and writes the files that commands of
// the tests read: cards, pictures, a backup.
//
//   _local  Ann Lee (picture; tags work, golf), Ben Ray (tag chess), Cid (a long note)
//           Friends (Ann, Ben) > Close (Cid); Club (Ben)
//   Work    Dora (tag night)
//   Old     empty
void fillAddressBook();

}  // namespace ox::kills
