#include "ox/transfer/exporter.hpp"

#include <algorithm>
#include <deque>
#include <future>
#include <memory>
#include <span>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "ox/base/failures.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/pinned_moment.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/vcard/write/writer.hpp"

namespace ox::vcard {
namespace {

// Records are read and written by batches, a few of them ahead of the sink.
constexpr std::size_t kRecordsAtOnce = 512;
constexpr std::size_t kBytesAtOnce = 1U << 20U;
constexpr std::size_t kBatchesAhead = 3;
// Where something cannot be read.
constexpr std::size_t kOneByOne = 16;

struct StoredPerson {
  RecordKey key;
  std::shared_ptr<const PropertyBag> values;
  Data picture;
};

struct StoredGroup {
  RecordKey key;
  std::shared_ptr<const PropertyBag> values;  // null when it is gone
  RecordKeys members;                         // that are exported too
};

struct Cards {
  std::string text;
  std::vector<std::size_t> ends;  // of each card in the text
};

Cards cardsOf(const std::vector<StoredPerson>& persons, CardVersion version) {
  Cards cards;
  cards.ends.reserve(persons.size());
  for (const auto& person : persons) {
    const bool hasUid = person.values->text(property_id::kCardUid) != nullptr;
    const auto uid = hasUid ? std::string() : uidOfRecord(person.key);
    appendCard(*person.values, person.picture, {.version = version, .uid = uid}, cards.text);
    cards.ends.push_back(cards.text.size());
  }
  return cards;
}

// One export under way.
class Export {
 public:
  Export(CardVersion version, const CardSink& sink, Unreadable unreadable)
      : version_(version), sink_(sink), unreadable_(unreadable) {}

  // The store is read here; other threads write the cards of what was read, to be given in order.
  void addPersons(std::span<const RecordKey> keys) {
    std::deque<std::future<Cards>> written;
    while (!report_.stopped) {
      while (!keys.empty() && written.size() < kBatchesAhead) {
        const auto persons = std::make_shared<const std::vector<StoredPerson>>(read(keys));
        const auto work =
            failures::watched([persons, version = version_] { return cardsOf(*persons, version); });
        // A single batch is not worth a thread. Work is copied into the future, not moved: where no
        // thread can be had, it is needed once more.
        const bool isAll = keys.empty() && written.empty();
        const auto policy =
            isAll ? std::launch::deferred : std::launch::async | std::launch::deferred;
        written.push_back(std::async(policy, work));
      }
      if (written.empty()) return;
      const auto cards = written.front().get();
      written.pop_front();
      give(cards);
    }
  }

  // Before the persons: of those that are members the UIDs are kept when they are read.
  void readGroups(std::span<const RecordKey> keys, const std::unordered_set<RecordKey>& exported) {
    for (std::size_t done = 0; done < keys.size();) {
      const auto some = keys.subspan(done, std::min(keys.size() - done, kRecordsAtOnce));
      auto contents = contentsOf(some);
      const auto read = some.first(contents.size());
      const auto persons = childrenOf(read, RecordKind::Person);
      const auto subgroups = childrenOf(read, RecordKind::Group);
      for (std::size_t i = 0; i < read.size(); ++i) {
        groups_.push_back({read[i], std::move(contents[i].values), {}});
        for (const auto& held : {persons[i], subgroups[i]}) {
          if (held) addMembers(*held, exported);
        }
      }
      done += read.size();
    }
    for (const auto& group : groups_) keepUid(group.key, group.values);
  }

  void addGroups() {
    for (const auto& group : groups_) {
      if (report_.stopped) return;
      if (!group.values) {
        countGone(group.key);
        continue;
      }
      std::vector<std::string> members;
      members.reserve(group.members.size());
      for (const auto& member : group.members) {
        if (!unread_.contains(member)) members.push_back(uidOf(member));
      }
      const auto uid = uidOfRecord(group.key);
      std::string card;
      appendGroup(*group.values, members, {.version = version_, .uid = uid}, card);
      give(card, report_.groups);
    }
  }

  const ExportReport& report() const { return report_; }

 private:
  // The next persons that are there; takes their keys away.
  std::vector<StoredPerson> read(std::span<const RecordKey>& keys) {
    std::vector<StoredPerson> persons;
    const auto most = keys.first(std::min(keys.size(), kRecordsAtOnce));
    auto contents = contentsOf(most);
    for (std::size_t i = 0; i < contents.size(); ++i) {
      auto& [values, picture] = contents[i];
      if (!values) {
        countGone(keys[i]);
        continue;
      }
      keepUid(keys[i], values);
      persons.push_back({keys[i], std::move(values), std::move(picture)});
    }
    keys = keys.subspan(contents.size());
    return persons;
  }

  // As many of the first as one question answers, and at least one. Where it has no answer each of
  // some is asked for by itself.
  std::vector<RecordContent> contentsOf(std::span<const RecordKey> keys) {
    try {
      return source_.committedContents(keys, kBytesAtOnce);
    } catch (const FailureError&) {
      if (unreadable_ == Unreadable::Fail) throw;
    }
    std::vector<RecordContent> contents;
    for (const auto& key : keys.first(std::min(keys.size(), kOneByOne))) {
      contents.push_back(readableContentOf(key));
    }
    return contents;
  }

  RecordContent readableContentOf(const RecordKey& key) {
    using What = MissingPart::What;
    RecordContent content;
    leaveOutUnread(key, What::Record, [&] { content.values = source_.committedValues(key); });
    if (!content.values) return content;
    leaveOutUnread(key, What::Picture, [&] { content.picture = source_.committedImage(key); });
    return content;
  }

  // Null for a group whose members cannot be read.
  std::vector<RecordKeysPtr> childrenOf(std::span<const RecordKey> groups, RecordKind kind) {
    try {
      return source_.committedChildren(groups, kind);
    } catch (const FailureError&) {
      if (unreadable_ == Unreadable::Fail) throw;
    }
    std::vector<RecordKeysPtr> children(groups.size());
    for (std::size_t i = 0; i < groups.size(); ++i) {
      leaveOutUnread(groups[i], MissingPart::What::Members,
                     [&] { children[i] = source_.committedChildren(groups[i], kind); });
    }
    return children;
  }

  template <typename Step>
  void leaveOutUnread(const RecordKey& key, MissingPart::What what, Step step) {
    try {
      step();
    } catch (const FailureError& error) {
      if (what == MissingPart::What::Record) unread_.insert(key);
      report_.missing.push_back({key, what, error.what()});
    }
  }

  void countGone(const RecordKey& key) {
    if (!unread_.contains(key)) ++report_.gone;
  }

  void addMembers(const RecordKeys& held, const std::unordered_set<RecordKey>& exported) {
    for (const auto& child : held) {
      if (!exported.contains(child)) continue;
      groups_.back().members.push_back(child);
      uidsOfMembers_.try_emplace(child);
    }
  }

  void keepUid(const RecordKey& key, const std::shared_ptr<const PropertyBag>& values) {
    const auto member = uidsOfMembers_.find(key);
    if (member == uidsOfMembers_.end() || !values) return;
    if (const auto* uid = values->text(property_id::kCardUid)) member->second = *uid;
  }

  // Whoever has none bears that of the record.
  std::string uidOf(const RecordKey& member) const {
    const auto& uid = uidsOfMembers_.at(member);
    return uid ? *uid : uidOfRecord(member);
  }

  void give(const Cards& cards) {
    std::size_t start = 0;
    for (const auto end : cards.ends) {
      give(std::string_view(cards.text).substr(start, end - start), report_.persons);
      if (report_.stopped) return;
      start = end;
    }
  }

  void give(std::string_view card, std::uint64_t& count) {
    if (sink_(card)) {
      ++count;
    } else {
      report_.stopped = true;
    }
  }

  ContainerSource& source_ = containerSource();
  CardVersion version_;
  const CardSink& sink_;
  Unreadable unreadable_;
  ExportReport report_;
  std::unordered_set<RecordKey> unread_;  // records that are left out
  std::vector<StoredGroup> groups_;
  std::unordered_map<RecordKey, Text> uidsOfMembers_;  // missing: no card gave one
};

}  // namespace

ExportReport exportCards(const RecordKeys& persons, const RecordKeys& groups, CardVersion version,
                         const CardSink& sink, Unreadable unreadable) {
  const PinnedMoment moment;
  Export work(version, sink, unreadable);
  if (!groups.empty()) {
    std::unordered_set<RecordKey> exported(persons.begin(), persons.end());
    exported.insert(groups.begin(), groups.end());
    work.readGroups(groups, exported);
  }
  work.addPersons(persons);
  work.addGroups();
  return work.report();
}

}  // namespace ox::vcard
