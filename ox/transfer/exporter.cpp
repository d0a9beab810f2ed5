#include "ox/transfer/exporter.hpp"

#include <deque>
#include <future>
#include <memory>
#include <span>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "ox/base/failures.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/vcard/write/writer.hpp"

namespace ox::vcard {
namespace {

// Persons are read and written by batches, a few of them ahead of the sink.
constexpr std::size_t kPersonsAtOnce = 128;
constexpr std::size_t kBytesAtOnce = 1U << 20U;
constexpr std::size_t kBatchesAhead = 3;

struct StoredPerson {
  RecordKey key;
  std::shared_ptr<const PropertyBag> values;
  Data picture;
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
  Export(CardVersion version, const CardSink& sink) : version_(version), sink_(sink) {}

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

  void addGroup(const RecordKey& key, const std::unordered_set<RecordKey>& exported) {
    const auto values = source_.committedValues(key);
    if (!values) {
      ++report_.gone;
      return;
    }
    std::vector<std::string> members;
    for (const auto kind : {RecordKind::Person, RecordKind::Group}) {
      const auto held = source_.committedChildren(key, kind);
      for (const auto& child : *held) {
        if (exported.contains(child)) members.push_back(uidOf(child));
      }
    }
    const auto uid = uidOfRecord(key);
    std::string card;
    appendGroup(*values, members, {.version = version_, .uid = uid}, card);
    give(card, report_.groups);
  }

  const ExportReport& report() const { return report_; }

 private:
  // The next persons that are there; takes their keys away.
  std::vector<StoredPerson> read(std::span<const RecordKey>& keys) {
    std::vector<StoredPerson> persons;
    std::size_t bytes = 0;
    while (!keys.empty() && persons.size() < kPersonsAtOnce && bytes < kBytesAtOnce) {
      const auto& key = keys.front();
      keys = keys.subspan(1);
      auto values = source_.committedValues(key);
      if (!values) {
        ++report_.gone;
        continue;
      }
      auto picture = source_.committedImage(key);
      bytes += roughSize(*values) + (picture ? picture->size() : 0);
      persons.push_back({key, std::move(values), std::move(picture)});
    }
    return persons;
  }

  std::string uidOf(const RecordKey& key) {
    const auto values = source_.committedValues(key);
    const auto* uid = values ? values->text(property_id::kCardUid) : nullptr;
    return uid != nullptr ? *uid : uidOfRecord(key);
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
  ExportReport report_;
};

}  // namespace

ExportReport exportCards(const RecordKeys& persons, const RecordKeys& groups, CardVersion version,
                         const CardSink& sink) {
  Export work(version, sink);
  work.addPersons(persons);
  std::unordered_set<RecordKey> exported;
  if (!groups.empty()) {
    exported.insert(persons.begin(), persons.end());
    exported.insert(groups.begin(), groups.end());
  }
  for (const auto& group : groups) {
    if (work.report().stopped) return work.report();
    work.addGroup(group, exported);
  }
  return work.report();
}

}  // namespace ox::vcard
