#pragma once

#include <set>
#include <string>

namespace ox::kills {

// Names of accounts, persons and groups that a state was written with, so that those which came
// later can be told.
using Identifiers = std::set<std::string>;

// What a store and its tag file hold, as a new process would find it, one line for each account,
// person and group: names, values, picture, members, tags; and what is kept of accounts in step
// with others. Identifiers that are not among the known ones read new1, new2, ...: two runs of one
// command leave equal texts. Tags of persons that are gone are told as such.
struct ReadableState {
  std::string contacts;
  std::string tags;

  std::string text() const { return contacts + tags; }
};
ReadableState readableState(const Identifiers& known, const std::string& storePath,
                            const std::string& tagPath);
// Of the test's own store.
ReadableState readableState(const Identifiers& known);
Identifiers identifiersNow();

}  // namespace ox::kills
