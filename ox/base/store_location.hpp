#pragma once

#include <string>

// Where the files of this user lie, and how they come into being. The environment is read on each
// call; an empty variable counts as unset.

namespace ox {

// $OX_CONTACT_STORE, else oxcontacts/contacts.db under $XDG_DATA_HOME (when that is an absolute
// path) or ~/.local/share.
std::string contactStorePath();

// $OX_TAG_STORE, else the path of the contact store with ".tags" after it.
std::string tagStorePath();

// The absolute path of the file that a path names, through every link; of one that is not there
// yet as well. The path itself when it names anything but a file, or cannot be followed.
std::string placeOf(const std::string& path);

// Whether a path leads, under whatever name, to where the contact store, the tags or what the
// database keeps beside them are or will be. Such a file must never be opened by anybody else:
// closing it would drop the locks that the database of this process holds on it.
bool isStoreFile(const std::string& path);

// Makes the file, empty and for this user alone (0600), with the missing folders above it (0700),
// and syncs the folder that received it. A file that exists is left as it is. True when it was
// made; throws std::system_error naming the path.
bool createPrivateFile(const std::string& path);

}  // namespace ox
