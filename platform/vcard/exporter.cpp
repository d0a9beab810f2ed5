#include "platform/vcard/exporter.hpp"

#include <string>
#include <unordered_set>
#include <vector>

namespace ox::vcard {
namespace {

// One export under way.
class Export {
 public:
  Export(CardVersion version, const CardSink& sink) : version_(version), sink_(sink) {}

  void addPerson(const RecordKey& key) {
    const auto values = source_.committedValues(key);
    if (!values) {
      ++report_.gone;
      return;
    }
    const auto uid = uidOfRecord(key);
    card_.clear();
    appendCard(*values, source_.committedImage(key), {.version = version_, .uid = uid}, card_);
    give(report_.persons);
  }

  void addGroup(const RecordKey& key, const std::unordered_set<RecordKey>& exported) {
    const auto values = source_.committedValues(key);
    if (!values) {
      ++report_.gone;
      return;
    }
    std::vector<std::string> members;
    for (const auto kind : {RecordKind::Person, RecordKind::Group}) {
      const auto held = source_.children(key, kind);
      for (const auto& child : *held) {
        if (exported.contains(child)) members.push_back(uidOf(child));
      }
    }
    const auto uid = uidOfRecord(key);
    card_.clear();
    appendGroup(*values, members, {.version = version_, .uid = uid}, card_);
    give(report_.groups);
  }

  const ExportReport& report() const { return report_; }

 private:
  std::string uidOf(const RecordKey& key) {
    const auto values = source_.committedValues(key);
    const auto* uid = values ? values->text(property_id::kCardUid) : nullptr;
    return uid != nullptr ? *uid : uidOfRecord(key);
  }

  void give(std::uint64_t& count) {
    if (sink_(card_)) {
      ++count;
    } else {
      report_.stopped = true;
    }
  }

  ContactSource& source_ = contactSource();
  CardVersion version_;
  const CardSink& sink_;
  ExportReport report_;
  std::string card_;
};

}  // namespace

ExportReport exportCards(const RecordKeys& persons, const RecordKeys& groups, CardVersion version,
                         const CardSink& sink) {
  Export work(version, sink);
  for (const auto& person : persons) {
    if (work.report().stopped) return work.report();
    work.addPerson(person);
  }
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
