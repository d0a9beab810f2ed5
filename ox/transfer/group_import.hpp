#pragma once

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "ox/platform/store/container_source.hpp"
#include "ox/transfer/importer.hpp"
#include "ox/vcard/read/card.hpp"

namespace ox::vcard {

// The group cards of an import: kept until every person is stored, then written with their members
// and sub-groups in one request. Borrows what it is given for its whole life. Throws what the store
// throws.
class GroupImport {
 public:
  // Group cards that are kept; what comes after is refused, so that no input fills the memory.
  static constexpr std::size_t kMaxBytes = 256U << 20U;

  GroupImport(ContainerSource& source, std::string container, const ImportOptions& options,
              ImportReport& report)
      : source_(source), container_(std::move(container)), options_(options), report_(report) {}

  void add(const std::string& file, Card card);
  // Works the request out anew when others have written meanwhile. Where they write again and again
  // what cannot be written as it was worked out is left out at last, with a problem.
  void commit();

 private:
  struct Group {
    std::string file;
    Card card;
    RecordKey key;
    bool stored = false;  // it was there before
    RecordKeys persons;
    std::vector<std::size_t> subgroups;  // of this import
    RecordKeys storedSubgroups;
    bool namesFewer = false;  // than the stored group holds
  };

  // The stored groups that look like a card without UID, by the persons whom they hold.
  class GroupsAlike {
   public:
    // The first that holds all persons of the group; none when there is none.
    RecordKey holderOf(const Group& group, const FoundRecords& records, const GroupImport& import);

   private:
    std::unordered_map<RecordKey, std::unordered_set<RecordKey>> holders_;
    std::unordered_map<RecordKey, RecordKeys> inOrder_;
  };

  void report(const Group& group, std::string reason);
  // False when it has to be worked out anew.
  bool tryCommit(SaveRequest::WhenOutdated whenOutdated);
  void forgetTry(std::size_t problems, std::uint64_t problemCount);
  SaveRequest workOut();
  void reportLeftOut(const SaveRequest& request);
  // Turns the UIDs of members into persons and groups.
  void resolveMembers();
  std::unordered_map<std::string_view, RecordKey> firstMatches(
      RecordKind kind, const std::vector<std::string_view>& uids);
  void findStored();
  void askForChildren(const RecordKeys& groups);
  // Of a group that was asked for.
  const RecordKeys& childrenOf(const RecordKey& stored, RecordKind kind) const;
  bool holdsAllPersons(const Group& group, const RecordKey& stored);
  // Takes away the links that would make a new group its own descendant.
  void breakCircles();
  void breakCirclesFrom(std::size_t start, std::vector<char>& colours);
  void collectNew(const Group& group, SaveRequest& request);
  // What a group that was there gets; nothing without leave to update.
  void collectStored(const Group& group, SaveRequest& request);
  // The members that a stored group holds and its card does not name; gone with leave to update.
  RecordKeys unnamedMembers(const Group& group, RecordKind kind);
  void removeUnnamed(SaveRequest& request);
  void nest(const Group& group, const RecordKey& child, SaveRequest& request);
  // True when the group is the other one, or lies somewhere below it.
  bool isBelow(const RecordKey& group, const RecordKey& top);

  ContainerSource& source_;
  std::string container_;
  const ImportOptions& options_;
  ImportReport& report_;
  ImportReport counted_;  // until the commit
  std::vector<Group> groups_;
  std::unordered_map<std::string, std::size_t> byUid_;
  std::unordered_set<std::string> withoutUid_;                                   // name and members
  std::map<RecordKind, std::unordered_map<RecordKey, RecordKeysPtr>> children_;  // of stored groups
  std::unordered_multimap<RecordKey, RecordKey> nested_;
  std::unordered_map<RecordKey, std::unordered_set<RecordKey>> removed_;  // sub-groups, by group
  std::size_t bytes_ = 0;
  std::size_t steps_ = 0;
};

}  // namespace ox::vcard
