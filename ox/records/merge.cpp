#include "ox/records/merge.hpp"

#include <algorithm>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "ox/records/entry_identity.hpp"
#include "ox/records/entry_match.hpp"
#include "ox/records/merged_keys.hpp"

namespace ox {
namespace {

bool sameContent(const MultiEntry& a, const MultiEntry& b) {
  return a.label == b.label && a.value == b.value;
}

// Numbers identifiers, the same one in every list alike. They are unique in a list; should one not
// be, its second entry is the second one everywhere.
class Numbers {
 public:
  EntryKeys of(const MultiValue& values) {
    std::unordered_map<std::uint64_t, std::size_t> seen;
    EntryKeys keys;
    keys.reserve(values.entries.size());
    for (const auto& entry : values.entries) {
      auto& known = numbers_[entry.identifier];
      const auto nth = seen[entry.identifier]++;
      if (nth == known.size()) known.push_back(count_++);
      keys.push_back(known[nth]);
    }
    return keys;
  }
  std::size_t count() const { return count_; }

 private:
  std::unordered_map<std::uint64_t, std::vector<std::size_t>> numbers_;
  std::size_t count_ = 0;
};

constexpr std::size_t kNoKey = SIZE_MAX;

// One of the three lists: its entries by their number, null where it has none, and which one is
// primary.
struct Side {
  Side(const MultiValue& values, const EntryKeys& keys, std::size_t count) : at(count, nullptr) {
    for (std::size_t i = 0; i < keys.size(); ++i) {
      const auto& entry = values.entries[i];
      at[keys[i]] = &entry;
      if (entry.identifier == values.primary && primary == kNoKey) primary = keys[i];
    }
  }

  std::vector<const MultiEntry*> at;
  std::size_t primary = kNoKey;
};

// A host that changes an entry may write it as a new one in the old one's place.
KeyLists keysOf(const MultiValue& base, const MultiValue& mine, const MultiValue& theirs) {
  Numbers numbers;
  KeyLists lists{numbers.of(base), numbers.of(withIdentifiersOfPlaces(base, mine)),
                 numbers.of(withIdentifiersOfPlaces(base, theirs)), 0};
  lists.count = numbers.count();
  return lists;
}

// The merge of three lists, which it borrows.
class EntryMerge {
 public:
  EntryMerge(const MultiValue& base, const MultiValue& mine, const MultiValue& theirs)
      : lists_(keysOf(base, mine, theirs)),
        base_(base, lists_.base, lists_.count),
        mine_(mine, lists_.mine, lists_.count),
        theirs_(theirs, lists_.theirs, lists_.count) {}

  MultiValue merged(std::vector<MultiEntry>& overtaken) {
    uniteEqualNews();
    std::vector<bool> keptByMine(lists_.count);
    for (std::size_t key = 0; key < lists_.count; ++key) {
      keptByMine[key] = hasChanged(mine_, key);
      if (const auto* lost = overtakenAt(key)) overtaken.push_back(*lost);
    }
    const auto keys = mergedKeys(lists_, keptByMine);
    MultiValue result;
    result.entries.reserve(keys.size());
    for (const auto key : keys) result.entries.push_back(*standingAt(key));
    result.primary = identifierOfPrimary(keys);
    return result;
  }

 private:
  // The entry is not as the base has it, or not in the base.
  bool isNews(const Side& side, std::size_t key) const {
    return side.at[key] && (!base_.at[key] || !sameContent(*base_.at[key], *side.at[key]));
  }

  bool hasChanged(const Side& side, std::size_t key) const {
    return base_.at[key] && isNews(side, key);
  }

  bool areEqualAt(std::size_t key) const {
    return mine_.at[key] && theirs_.at[key] && sameContent(*mine_.at[key], *theirs_.at[key]);
  }

  // Where both sides came to equal entries under different identifiers, both mean the same one from
  // here on. An addition of both goes by its identifier there; otherwise theirs gives way, because
  // what mine has changed always stands.
  void uniteEqualNews() {
    EntryMatch news(EntryMatch::By::LabelAndValue);
    for (const auto key : lists_.theirs) {
      if (isNews(theirs_, key) && !areEqualAt(key)) news.offer(*theirs_.at[key], key);
    }
    std::vector<bool> givesWay(lists_.count);
    for (auto& key : lists_.mine) {
      if (!isNews(mine_, key) || areEqualAt(key)) continue;
      const auto equal = news.take(*mine_.at[key]);
      if (!equal) continue;
      if (!base_.at[key] && !base_.at[*equal] && !mine_.at[*equal]) {
        rename(key, *equal);
      } else {
        if (theirs_.primary == *equal) theirs_.primary = key;
        givesWay[*equal] = true;
      }
    }
    std::erase_if(lists_.theirs, [&](std::size_t key) {
      if (givesWay[key]) theirs_.at[key] = nullptr;
      return givesWay[key];
    });
  }

  void rename(std::size_t& key, std::size_t name) {
    mine_.at[name] = std::exchange(mine_.at[key], nullptr);
    if (mine_.primary == key) mine_.primary = name;
    key = name;
  }

  // What mine wins over; null where nothing is lost.
  const MultiEntry* overtakenAt(std::size_t key) const {
    const auto* there = theirs_.at[key];
    if (hasChanged(mine_, key) && !there) return base_.at[key];
    if (areEqualAt(key) || !isNews(theirs_, key)) return nullptr;
    const bool mineDecides = mine_.at[key] ? isNews(mine_, key) : base_.at[key] != nullptr;
    return mineDecides ? there : nullptr;
  }

  // Mine's where mine has chosen one that stands, else theirs'.
  std::uint64_t identifierOfPrimary(const EntryKeys& keys) const {
    const auto stands = [&](std::size_t key) { return std::ranges::find(keys, key) != keys.end(); };
    const bool isMine = mine_.primary != base_.primary;
    if (isMine && mine_.primary == kNoKey) return 0;
    const auto primary = isMine && stands(mine_.primary) ? mine_.primary : theirs_.primary;
    return stands(primary) ? standingAt(primary)->identifier : 0;
  }

  // Of an entry that stands.
  const MultiEntry* standingAt(std::size_t key) const {
    const bool isTheirs = theirs_.at[key] && (!isNews(mine_, key) || areEqualAt(key));
    return isTheirs ? theirs_.at[key] : mine_.at[key];
  }

  KeyLists lists_;
  Side base_;
  Side mine_;
  Side theirs_;
};

const Object* objectOf(const PropertyValue& value) {
  const auto* object = std::get_if<Object>(&value);
  return object != nullptr && !object->isMissing() ? object : nullptr;
}

MultiValue entriesOf(const PropertyValue& value) {
  const auto* held = std::get_if<MultiValuePtr>(&value);
  return held != nullptr && *held ? **held : MultiValue();
}

}  // namespace

MultiValue mergedEntries(const MultiValue& base, const MultiValue& mine, const MultiValue& theirs,
                         std::vector<MultiEntry>& overtaken) {
  if (base == theirs) return mine;
  if (base == mine) return theirs;
  return EntryMerge(base, mine, theirs).merged(overtaken);
}

PropertyValue mergedValue(const PropertyValue& base, const PropertyValue& mine,
                          const PropertyValue& theirs, std::vector<MultiEntry>& overtaken) {
  if (sameValue(base, theirs) || sameValue(mine, theirs)) return mine;
  if (sameValue(base, mine)) return theirs;
  if (objectOf(base) || objectOf(mine) || objectOf(theirs)) {
    const auto* lost = objectOf(theirs);
    overtaken.push_back({0, std::nullopt, lost != nullptr ? *lost : Object()});
    return mine;
  }
  auto merged = mergedEntries(entriesOf(base), entriesOf(mine), entriesOf(theirs), overtaken);
  if (merged.entries.empty()) return Object();
  return std::make_shared<const MultiValue>(std::move(merged));
}

std::vector<std::string> mergedTags(const std::vector<std::string>& base,
                                    const std::vector<std::string>& mine,
                                    const std::vector<std::string>& theirs) {
  std::vector<std::string_view> names;
  std::unordered_map<std::string_view, std::size_t> numbers;
  const auto keys = [&](const std::vector<std::string>& tags) {
    EntryKeys list;
    std::unordered_set<std::size_t> listed;
    for (const auto& tag : tags) {
      const auto [known, isNew] = numbers.emplace(tag, names.size());
      if (isNew) names.emplace_back(tag);
      if (listed.insert(known->second).second) list.push_back(known->second);
    }
    return list;
  };
  KeyLists lists{keys(base), keys(mine), keys(theirs), 0};
  lists.count = names.size();
  std::vector<std::string> result;
  for (const auto key : mergedKeys(lists, std::vector<bool>(lists.count))) {
    result.emplace_back(names[key]);
  }
  return result;
}

}  // namespace ox
