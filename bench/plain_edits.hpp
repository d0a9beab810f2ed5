#pragma once

#include <cstddef>
#include <string>

#include "bench/plain_sqlite.hpp"

// The floors under edits: the same rows written through SQLite's own calls in the transactions of
// the store. Everything here answers the seconds it took, without opening the file, and throws
// std::runtime_error when SQLite refuses.
namespace ox::bench::plain {

// Adds a group and, timed, every person to it: one synced transaction.
double addLinks(const std::string& path);

// Removes every membership by its two ends: one synced transaction.
double removeLinks(const std::string& path);

// Reads parent and child of every membership, and throws unless there are that many.
double listLinks(const std::string& path, std::size_t expected);

// Removes every so manieth person, with all that hangs on it: one synced transaction.
double removePersons(const std::string& path, std::size_t step);

// Removes a container and every record in it, likewise.
double removeContainer(const std::string& path, const std::string& container);

// Writes that many empty persons, a commit each, without waiting for the disk.
double addPersons(const std::string& path, std::size_t count);

// Changes the values of one record after another, a synced commit each.
double editSynced(const std::string& path, std::size_t count);

// Removes every picture: one synced transaction.
double removePictures(const std::string& path);

// Reads the properties and the picture of every record.
double readContent(const std::string& path);

// A person for each row, with its values and picture: one synced transaction.
double fillPersons(const std::string& path, const Rows& rows);

}  // namespace ox::bench::plain
