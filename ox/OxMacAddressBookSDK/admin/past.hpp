#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/base/record_key.hpp"
#include "ox/platform/store/values/journal_entries.hpp"

// The way back for contacts and tags together, which lie in two files: each of these is one act of
// the store, and the tag file has followed it when it returns. Safe from any thread; what fails is
// a StoreError.

namespace ox {

// journal::undo and journal::redo, with the tags.
OX_EXPORT UndoReport undoCommand(std::optional<std::int64_t> number = std::nullopt);
OX_EXPORT UndoReport redoCommand();

// Makes the store and its tags hold what the copy of that name holds (storeCopies()), as one act,
// which can be taken back. Not done, with a reason, when there is no such copy.
OX_EXPORT UndoReport restoreStoreCopy(const std::string& name);

// What became of a person who was to be forgotten.
struct ForgetReport {
  bool found = false;
  std::uint64_t copies = 0;       // kept copies that held her
  std::vector<std::string> left;  // why something of her is left, one sentence for each file
};
// Erases a person for good: from the store, its journal, the tags and every kept copy. Nobody can
// take that back. `name` is what she was called, to be erased from the commands that the journal
// tells of; it may be empty. Other processes and followers of the journal start anew.
OX_EXPORT ForgetReport forgetPerson(const RecordKey& person, const std::string& name);

}  // namespace ox
