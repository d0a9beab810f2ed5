#include "ox/transfer/exporter.hpp"

#include <algorithm>
#include <deque>
#include <future>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "ox/base/failures.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/transfer/person_tags.hpp"
#include "ox/vcard/write/writer.hpp"

namespace ox::vcard {
namespace {

// Records are read and written by batches, a few of them ahead of the sink.
constexpr std::size_t kRecordsAtOnce = 512;
constexpr std::size_t kBytesAtOnce = 1U << 20U;
constexpr std::size_t kBatchesAhead = 3;
constexpr std::size_t kSpareBytes = 4U << 20U;  // of cards, for whose room another batch has use
// Where something cannot be read.
constexpr std::size_t kOneByOne = 16;

struct StoredGroup {
  RecordKey key;
  std::shared_ptr<const PropertyBag> values;  // null when it is gone
  RecordKeys members;                         // that are exported too
};

struct Cards {
  std::string text;
  std::vector<std::size_t> ends;  // of each card in the text
  std::vector<Text> uids;         // that the persons' cards gave them

  void clear() {
    text.clear();
    ends.clear();
    uids.clear();
  }
};

void addCard(const RecordKey& key, const PropertyBag& values, const Data& picture,
             const std::optional<Tags>& tags, CardVersion version, Cards& cards) {
  const auto* given = values.text(property_id::kCardUid);
  const auto uid = given != nullptr ? std::string() : uidOfRecord(key);
  const auto categories = tags ? categoriesToWrite(values, *tags) : std::nullopt;
  const WriteOptions options{
      .version = version, .uid = uid, .categories = categories ? &*categories : nullptr};
  appendCard(values, picture, options, cards.text);
  cards.ends.push_back(cards.text.size());
  cards.uids.push_back(given != nullptr ? Text(*given) : Text());
}

// Some persons as they lie in the store, and the cards of the first of them: of all, unless there
// is one who is gone or damaged.
struct Batch {
  std::span<const RecordKey> keys;
  std::vector<EncodedContent> contents;
  std::vector<std::optional<Tags>> tags;
  Cards cards;

  void write(CardVersion version) {
    cards.clear();
    for (std::size_t i = 0; i < contents.size(); ++i) {
      const auto values = decodedValues(contents[i]);
      if (!values) return;
      addCard(keys[i], *values, contents[i].picture, tags[i], version, cards);
    }
  }
};

struct WrittenBatch {
  std::shared_ptr<Batch> batch;
  std::future<void> isWritten;
};

// One export under way.
class Export {
 public:
  Export(CardVersion version, const CardSink& sink, Unreadable unreadable)
      : version_(version), sink_(sink), unreadable_(unreadable) {}

  // The store is read here; other threads decode what was read and write the cards, to be given in
  // order.
  void addPersons(std::span<const RecordKey> keys) {
    std::deque<WrittenBatch> written;
    std::vector<std::shared_ptr<Batch>> spare;
    while (!report_.stopped) {
      while (!keys.empty() && written.size() < kBatchesAhead) {
        if (spare.empty()) spare.push_back(std::make_shared<Batch>());
        written.push_back(begin(keys, spare.back(), written.empty()));
        spare.pop_back();
      }
      if (written.empty()) return;
      auto [batch, isWritten] = std::move(written.front());
      written.pop_front();
      isWritten.get();
      give(batch->keys, batch->cards);
      addPlainly(batch->keys.subspan(batch->cards.ends.size()));
      if (batch->cards.text.size() <= kSpareBytes) spare.push_back(batch);
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
    for (const auto& group : groups_) {
      const auto* uid = group.values ? group.values->text(property_id::kCardUid) : nullptr;
      if (uid != nullptr) keepUid(group.key, *uid);
    }
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
  // Reads the next persons, takes their keys away, and has their cards written.
  WrittenBatch begin(std::span<const RecordKey>& keys, const std::shared_ptr<Batch>& batch,
                     bool isFirst) {
    const auto most = keys.first(std::min(keys.size(), kRecordsAtOnce));
    batch->contents = encodedContentsOf(most);
    // Where they cannot be asked for together, some are looked at one by one.
    const auto count = batch->contents.empty() ? kOneByOne : batch->contents.size();
    batch->keys = most.first(std::min(most.size(), count));
    keys = keys.subspan(batch->keys.size());
    batch->tags.clear();
    for (const auto& key : batch->keys) batch->tags.push_back(tagsOf(key));
    const auto work = failures::watched([batch, version = version_] { batch->write(version); });
    // A single batch is not worth a thread. Work is copied into the future, not moved: where no
    // thread can be had, it is needed once more.
    const bool isAll = keys.empty() && isFirst;
    const auto policy = isAll ? std::launch::deferred : std::launch::async | std::launch::deferred;
    return {batch, std::async(policy, work)};
  }

  std::vector<EncodedContent> encodedContentsOf(std::span<const RecordKey> keys) {
    try {
      return source_.encodedContents(keys, kBytesAtOnce);
    } catch (const FailureError&) {
      if (unreadable_ == Unreadable::Fail) throw;
      return {};
    }
  }

  std::optional<Tags> tagsOf(const RecordKey& person) {
    return noTags_ ? Tags() : tags_.of(person);
  }

  // The persons from one on that is gone or damaged, which the store tells when it is asked for
  // them itself.
  void addPlainly(std::span<const RecordKey> keys) {
    while (!keys.empty() && !report_.stopped) {
      const auto contents = contentsOf(keys);
      for (std::size_t i = 0; i < contents.size() && !report_.stopped; ++i) {
        const auto& [values, picture] = contents[i];
        if (!values) {
          countGone(keys[i]);
          continue;
        }
        Cards card;
        addCard(keys[i], *values, picture, tagsOf(keys[i]), version_, card);
        give(keys.subspan(i, 1), card);
      }
      keys = keys.subspan(contents.size());
    }
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

  void keepUid(const RecordKey& key, const Text& uid) {
    if (uidsOfMembers_.empty()) return;
    const auto member = uidsOfMembers_.find(key);
    if (member != uidsOfMembers_.end()) member->second = uid;
  }

  // Whoever has none bears that of the record.
  std::string uidOf(const RecordKey& member) const {
    const auto& uid = uidsOfMembers_.at(member);
    return uid ? *uid : uidOfRecord(member);
  }

  // The cards of the first of these.
  void give(std::span<const RecordKey> keys, const Cards& cards) {
    std::size_t start = 0;
    for (std::size_t i = 0; i < cards.ends.size(); ++i) {
      keepUid(keys[i], cards.uids[i]);
      const auto end = cards.ends[i];
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
  PersonTags tags_;
  bool noTags_ = tags_.areNone();
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
  const OneMoment moment;
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
