#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/base/text.hpp"

namespace ox {

// The tags of persons, by person ID, under one identifier. A person's tags are texts in the order
// of adding, none twice. Changes take effect at once, for every process, and outlive a killed
// process. Nothing is opened before the first look-up and no file is made before the first tag. A
// file that cannot be used gives empty answers and is noticed (ox/base/failures.hpp); it is never
// overwritten. Every operation ignores a missing argument. Safe from any thread.
class OX_EXPORT OxTagManager {
  struct Key {
    explicit Key() = default;
  };

 public:
  using Tags = std::vector<std::string>;

  // Always the same object for one identifier, which may be empty; null for a missing one.
  static std::shared_ptr<OxTagManager> tagManagerWithID(TextView identifier);

  // Missing when the person has none.
  std::optional<Tags> tagsByPersonID(TextView personID) const;
  // Appends the tag; no change when the person has it already.
  void addPersonID_forTag(TextView personID, TextView tag);
  void removePersonID_fromTag(TextView personID, TextView tag);
  // Replaces the person's tags; of repeated ones the first counts. A missing list clears them, as
  // an empty one does.
  void setTags_forPersonID(const std::optional<Tags>& tags, TextView personID);
  void removeForPersonID(TextView personID);
  // Removes the first ones, then appends the others; of repeated ones the first counts.
  void changeTags(const Tags& removed, const Tags& added, TextView personID);

  // What is wrong with the tag file, one line each; empty when nothing is, or there is no file.
  static std::vector<std::string> problems();
  // Makes this process's changes under every identifier survive a power cut. False, and counted,
  // when that failed; costs nothing when there is nothing new.
  static bool makeDurable();

  OxTagManager(Key, std::string identifier);

 private:
  std::string identifier_;
};

}  // namespace ox
