#pragma once

#include <string>

#include "ox/base/export.hpp"

// Where the contact store and the tags of this process lie. The environment is read on each call;
// an empty variable counts as unset. Safe from any thread.

namespace ox {

// Makes the file at that path the contact store of this process, whatever $OX_CONTACT_STORE says.
// False, and nothing is changed, once the process has begun to use a store or its tags: they stay
// together until the process ends.
OX_EXPORT bool useContactStore(std::string path);

// From now on useContactStore is refused; called by whoever is about to open the store or the tags.
OX_EXPORT void settleStoreLocation();

// What useContactStore was given, else $OX_CONTACT_STORE, else oxcontacts/contacts.db under
// $XDG_DATA_HOME (when that is an absolute path) or ~/.local/share.
OX_EXPORT std::string contactStorePath();

// $OX_TAG_STORE, else the path of the contact store with ".tags" after it.
OX_EXPORT std::string tagStorePath();

// The absolute path of the file that a path names, through every link; of one that is not there
// yet as well. The path itself when it names anything but a file, or cannot be followed.
OX_EXPORT std::string placeOf(const std::string& path);

// Whether a path leads, under whatever name, to where the contact store, the tags or what the
// database keeps beside them are or will be. Such a file must never be opened by anybody else:
// closing it would drop the locks that the database of this process holds on it.
OX_EXPORT bool isStoreFile(const std::string& path);

}  // namespace ox
