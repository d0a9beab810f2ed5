#pragma once

#include <cstddef>
#include <string>

// Stores and files that the benchmarks work on. They lie in a temporary folder (under $TMPDIR, else
// /tmp) that goes when the process ends. One thread at a time.
namespace ox::bench {

// A path in the temporary folder.
std::string temporaryPath(const std::string& name);

// A file of that many generated cards, made when first asked for.
const std::string& cardFile(std::size_t count);

// A store of that many persons, spread evenly over the local account and three more, made by the
// importer when first asked for. An empty one for 0.
const std::string& storeOf(std::size_t persons);

// A store of that many persons, all in the local account; likewise.
const std::string& localStoreOf(std::size_t persons);

// A copy to change at will; the one made before it is gone.
std::string copyOf(const std::string& store);

// Renames a store that nobody has open.
void moveStore(const std::string& from, const std::string& to);

// Removes a store and what SQLite keeps beside it.
void removeStore(const std::string& path);

// Imports a file of cards and throws unless `added` of them were new.
void importInto(const std::string& store, const std::string& container, const std::string& cards,
                std::size_t added);

}  // namespace ox::bench
