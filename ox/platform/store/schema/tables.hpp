#pragma once

#include <string>
#include <string_view>

namespace ox {

inline constexpr int kSchemaVersion = 4;
// The first one whose rows carry checksums.
inline constexpr int kFirstSummedVersion = 3;

// The statements that make the tables of a store, without a row; of these, those that keep accounts
// which are in step with a book elsewhere; those that begin a journal, with an act of nobody, in a
// store whose next record and link have these numbers, or what these expressions come to.
std::string emptyTables();
std::string syncTables();
std::string newJournal(std::string_view nextRecord, std::string_view nextLink);

// Those that make the tables of a new store, with what is in them from the beginning.
std::string newTables();

}  // namespace ox
