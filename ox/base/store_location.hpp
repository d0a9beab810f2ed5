#pragma once

#include <string>
#include <utility>

#include "ox/base/export.hpp"

// Where the contact store and the tags of this process lie. The environment is read on each call;
// an empty variable counts as unset. Safe from any thread.

namespace ox {

// Where a contact store is: a file. Whoever opens a store, tells of it or needs what lies beside it
// is given its address, and takes no path apart.
class OX_EXPORT StoreAddress {
 public:
  // Of what people type and variables hold: the path of the file.
  StoreAddress(std::string file) : file_(std::move(file)) {}

  // What messages call the store.
  const std::string& name() const { return file_; }
  const std::string& file() const { return file_; }
  // The folder of the file, as its path names it; empty for the current one.
  std::string folder() const;
  // The tags that go with the store unless $OX_TAG_STORE says otherwise.
  std::string tagFile() const { return file_ + ".tags"; }
  // What the persons of the store are found by; made anew where it is missing. Beside the file
  // itself, whatever link leads there, so that there is one.
  std::string searchFile() const;
  // True of a store that is there and whose file or folder this process may not write.
  bool isReadOnly() const;

  bool operator==(const StoreAddress&) const = default;

 private:
  std::string file_;
};

// Makes the store at that address the contact store of this process, whatever $OX_CONTACT_STORE
// says. False, and nothing is changed, once the process has begun to use a store or its tags: they
// stay together until the process ends.
OX_EXPORT bool useContactStore(std::string address);

// From now on useContactStore is refused; called by whoever is about to open the store or the tags.
OX_EXPORT void settleStoreLocation();

// What useContactStore was given, else $OX_CONTACT_STORE, else oxcontacts/contacts.db under
// $XDG_DATA_HOME (when that is an absolute path) or ~/.local/share.
OX_EXPORT StoreAddress contactStore();

// Its file, for whoever works on that alone.
OX_EXPORT std::string contactStorePath();

// $OX_TAG_STORE, else the tags that go with the contact store.
OX_EXPORT std::string tagStorePath();

// The absolute path of the file that a path names, through every link; of one that is not there
// yet as well. The path itself when it names anything but a file, or cannot be followed.
OX_EXPORT std::string placeOf(const std::string& path);

// Whether a path leads, under whatever name, to where the contact store, the tags or what is kept
// beside them are or will be. Such a file must never be opened by anybody else:
// closing it would drop the locks that the database of this process holds on it.
OX_EXPORT bool isStoreFile(const std::string& path);

}  // namespace ox
