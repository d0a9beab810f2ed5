#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ox/base/sqlite/connection.hpp"
#include "ox/records/tag_change.hpp"

namespace ox {

// One open tag file and every statement over it. One thread at a time; throws sqlite::Error, and
// FailureError where what it holds is damaged.
class TagFile {
 public:
  using Tags = std::vector<std::string>;
  using TagsOfPersons = std::unordered_map<std::string, Tags>;

  // Opens the file, which must exist, fills it when it is empty, and brings one of an earlier
  // version up to this one. Throws, and changes nothing, when it is not a tag file that this
  // version can read.
  explicit TagFile(const std::string& path);

  Tags tags(std::string_view manager, std::string_view person);
  // Of each person who has any.
  TagsOfPersons tagsUnder(std::string_view manager);
  bool isEmpty();
  void add(std::string_view manager, std::string_view person, std::string_view tag);
  void remove(std::string_view manager, std::string_view person, std::string_view tag);
  // The tags must hold none twice.
  void replace(std::string_view manager, std::string_view person, const Tags& tags);
  // Under which managers the person has tags.
  std::vector<std::string> managersOf(std::string_view person);

  // Makes the changes of those acts of a store (by its name) that the tags have not followed yet,
  // in one transaction: each is merged with what is there (ox/records/merge.hpp). The acts are in
  // the order of their numbers, and none is missing between the last followed one and the last of
  // them that changed tags. A store that was put back to an earlier state gives numbers to other
  // acts; those are followed too: `lastAct` answers the number of the store's last act when it is
  // called.
  using LastAct = std::function<std::int64_t()>;
  void follow(std::string_view store, const std::vector<TagAct>& acts, const LastAct& lastAct);
  // The last act of the store that is followed; 0 without any.
  std::int64_t lastFollowed(std::string_view store);

  // From then on, what is read is of one moment, that of the first reading, until it is left or
  // this file is written to.
  void stayAtMoment();
  void leaveMoment() { snapshot_.reset(); }

  // One line for each problem that the file has.
  Tags problems();
  // Commits once more, synced to the disk, and so syncs every commit before it.
  void sync();

 private:
  explicit TagFile(sqlite::Connection connection);

  // Behind those that the person has; one that is there already stays where it is.
  template <typename Tag>
  void append(std::string_view manager, std::string_view person, std::span<Tag> tags);
  void merge(const TagChange& change);
  struct Followed {
    std::int64_t number = 0;
    std::string name;
  };
  // The last act of the store that the tags have followed, as it stands in the file.
  std::optional<Followed> followedAct(std::string_view store);
  // The number of the last act of the store that the tags have followed; 0 when they have followed
  // none, or the store has gone back behind it.
  std::int64_t followed(std::string_view store, const std::vector<TagAct>& acts,
                        const LastAct& lastAct);

  sqlite::Connection connection_;
  sqlite::Statement select_;
  sqlite::Statement any_;
  sqlite::Statement insert_;
  sqlite::Statement lastPosition_;
  sqlite::Statement deleteOne_;
  sqlite::Statement deleteAll_;
  sqlite::Statement managers_;
  sqlite::Statement followed_;
  sqlite::Statement setFollowed_;
  std::optional<sqlite::Snapshot> snapshot_;
};

}  // namespace ox
