#include "ox/sync/cards/parts/entry_merge.hpp"

#include <algorithm>
#include <utility>

#include "ox/records/entry_match.hpp"

namespace ox::sync {
namespace {

using Side = MergedEntry::Side;

bool areSame(const MultiEntry& a, const MultiEntry& b) {
  return a.label == b.label && a.value == b.value;
}

// One side's part in an entry: what it was and what it is; null where it has none.
struct Part {
  const MultiEntry* base = nullptr;
  const MultiEntry* now = nullptr;

  bool isNews() const { return now != nullptr && (base == nullptr || !areSame(*base, *now)); }
  bool isRemoved() const { return base != nullptr && now == nullptr; }
  bool isThere() const { return base != nullptr || now != nullptr; }
};

// One entry through all four lists.
struct Kin {
  Part ours;
  Part theirs;
};

// What is new of it.
struct Changes {
  bool label = false;
  bool value = false;
};

Changes changesOf(const Part& part) {
  if (!part.isNews()) return {};
  if (part.base == nullptr) return {true, true};
  return {part.base->label != part.now->label, !(part.base->value == part.now->value)};
}

// What is to stand of a kin, and on which side it comes from.
struct Standing {
  MultiEntry entry;
  Side side = Side::Ours;
  std::uint64_t from = 0;
  bool isThere = false;
};

Standing standing(const MultiEntry* entry, Side side) {
  if (entry == nullptr) return {};
  return {*entry, side, entry->identifier, true};
}

class EntryMerge {
 public:
  EntryMerge(const FourLists& lists, std::uint64_t firstFree)
      : lists_(lists), nextIdentifier_(firstFree) {
    gatherBases();
    gather(lists.ourBase, lists.ours, ourBaseKins_, ourKins_, &Kin::ours, Identifiers::Tell);
    gather(lists.theirBase, lists.theirs, theirBaseKins_, theirKins_, &Kin::theirs,
           Identifiers::TellNothing);
    uniteNews();
  }

  MergedEntries merged() {
    MergedEntries result;
    std::vector<Standing> us(kins_.size());
    std::vector<Standing> them(kins_.size());
    for (std::size_t kin = 0; kin < kins_.size(); ++kin) {
      settle(kins_[kin], us[kin], them[kin], result.conflicts);
    }
    result.forUs = listOf(us, ourKins_, theirKins_, &Kin::ours);
    result.forThem = listOf(them, theirKins_, ourKins_, &Kin::theirs);
    settlePrimaries(result, us, them);
    return result;
  }

 private:
  using Kins = std::vector<std::size_t>;  // of each entry of a list
  static constexpr auto kNoKin = static_cast<std::size_t>(-1);

  void gatherBases() {
    for (const auto& entry : lists_.theirBase.entries) {
      theirBaseKins_.push_back(kins_.size());
      kins_.push_back({{}, {&entry, nullptr}});
    }
    const auto origins = originsOf(lists_.theirBase, lists_.ourBase, Identifiers::TellNothing);
    for (std::size_t i = 0; i < origins.size(); ++i) {
      const auto* entry = &lists_.ourBase.entries[i];
      if (origins[i] == kNewEntry) {
        ourBaseKins_.push_back(kins_.size());
        kins_.push_back({{entry, nullptr}, {}});
      } else {
        ourBaseKins_.push_back(origins[i]);
        kins_[origins[i]].ours.base = entry;
      }
    }
  }

  void gather(const MultiValue& base, const MultiValue& now, const Kins& baseKins, Kins& kins,
              Part Kin::*part, Identifiers identifiers) {
    const auto origins = originsOf(base, now, identifiers);
    for (std::size_t i = 0; i < origins.size(); ++i) {
      if (origins[i] == kNewEntry) {
        kins.push_back(kins_.size());
        kins_.emplace_back();
      } else {
        kins.push_back(baseKins[origins[i]]);
      }
      (kins_[kins.back()].*part).now = &now.entries[i];
    }
  }

  // What both have come to, or what one has come to that the other one had all the time, is one.
  void uniteNews() {
    unite(EntryMatch::By::LabelAndValue);
    unite(EntryMatch::By::Value);
  }

  void unite(EntryMatch::By by) {
    const auto isLonely = [&](std::size_t kin, Part Kin::*mine, Part Kin::*others) {
      if ((kins_[kin].*others).isThere() || (kins_[kin].*mine).now == nullptr) return false;
      return by == EntryMatch::By::LabelAndValue || (kins_[kin].*mine).base == nullptr;
    };
    EntryMatch open(by);
    for (const auto kin : theirKins_) {
      if (isLonely(kin, &Kin::theirs, &Kin::ours)) open.offer(*kins_[kin].theirs.now, kin);
    }
    for (auto& kin : ourKins_) {
      if (!isLonely(kin, &Kin::ours, &Kin::theirs)) continue;
      const auto equal = open.take(*kins_[kin].ours.now);
      if (!equal) continue;
      kins_[*equal].ours = std::exchange(kins_[kin].ours, {});
      for (auto& base : ourBaseKins_) {
        if (base == kin) base = *equal;
      }
      kin = *equal;
    }
  }

  static void settle(const Kin& kin, Standing& us, Standing& them,
                     std::vector<EntryConflict>& conflicts) {
    const auto& ours = kin.ours;
    const auto& theirs = kin.theirs;
    // What one side does not hold although the other does stays so, until one has news of it.
    if (!theirs.isRemoved() || ours.isNews()) us = standing(ours.now, Side::Ours);
    if (!ours.isRemoved() || theirs.isNews()) them = standing(theirs.now, Side::Theirs);
    const auto ourNews = changesOf(ours);
    const auto theirNews = changesOf(theirs);
    if (theirs.isNews()) take(theirNews, standing(theirs.now, Side::Theirs), us);
    if (ours.isNews()) {
      take({ourNews.label && !theirNews.label, ourNews.value && !theirNews.value},
           standing(ours.now, Side::Ours), them);
    }
    const bool areLabelsApart =
        ourNews.label && theirNews.label && ours.now->label != theirs.now->label;
    const bool areValuesApart =
        ourNews.value && theirNews.value && !(ours.now->value == theirs.now->value);
    if (areLabelsApart || areValuesApart) {
      const auto* base = ours.base;
      conflicts.push_back({us.entry, *ours.now, base != nullptr ? *base : MultiEntry{}});
    }
  }

  // The label or the value or both, or all of it where there is none yet.
  static void take(const Changes& changes, const Standing& from, Standing& to) {
    if (!to.isThere) {
      to = from;
      return;
    }
    if (changes.label) to.entry.label = from.entry.label;
    if (!changes.value) return;
    to.entry.value = from.entry.value;
    to.side = from.side;
    to.from = from.from;
  }

  // In the order of the side; what it did not have stands behind the neighbour that it has on the
  // other one.
  MergedList listOf(const std::vector<Standing>& standing, const Kins& own, const Kins& others,
                    Part Kin::*part) {
    std::vector<bool> isOwn(kins_.size());
    for (const auto kin : own) isOwn[kin] = true;
    Kins behind(kins_.size(), kNoKin);
    std::size_t front = kNoKin;
    std::size_t before = kNoKin;
    for (const auto kin : others) {
      if (!standing[kin].isThere) continue;
      if (!isOwn[kin]) (before == kNoKin ? front : behind[before]) = kin;
      before = kin;
    }
    Kins order;
    const auto append = [&](std::size_t kin) {
      for (; kin != kNoKin; kin = behind[kin]) order.push_back(kin);
    };
    append(front);
    for (const auto kin : own) {
      if (standing[kin].isThere) append(kin);
    }
    MergedList list;
    for (const auto kin : order) {
      const auto* held = (kins_[kin].*part).now;
      auto entry = standing[kin].entry;
      entry.identifier = held != nullptr ? held->identifier : nextIdentifier_++;
      if (held == nullptr || !areSame(*held, entry)) list.isChanged = true;
      list.entries.push_back({std::move(entry), standing[kin].side, standing[kin].from});
    }
    if (order.size() != own.size()) list.isChanged = true;
    return list;
  }

  static std::size_t primaryOf(const MultiValue& values, const Kins& kins) {
    if (values.primary == 0) return kNoKin;
    for (std::size_t i = 0; i < kins.size(); ++i) {
      if (values.entries[i].identifier == values.primary) return kins[i];
    }
    return kNoKin;
  }

  // The one that a side has chosen anew, of both theirs.
  void settlePrimaries(MergedEntries& result, const std::vector<Standing>& us,
                       const std::vector<Standing>& them) const {
    const auto ours = primaryOf(lists_.ours, ourKins_);
    const auto theirs = primaryOf(lists_.theirs, theirKins_);
    const bool isOurChoice = ours != primaryOf(lists_.ourBase, ourBaseKins_);
    const bool isTheirChoice = theirs != primaryOf(lists_.theirBase, theirBaseKins_);
    settlePrimary(result.forUs, isTheirChoice ? theirs : ours, ours, us, ourKins_, lists_.ours);
    settlePrimary(result.forThem, isOurChoice && !isTheirChoice ? ours : theirs, theirs, them,
                  theirKins_, lists_.theirs);
  }

  static void settlePrimary(MergedList& list, std::size_t primary, std::size_t before,
                            const std::vector<Standing>& standing, const Kins& kins,
                            const MultiValue& held) {
    if (primary != kNoKin && !standing[primary].isThere) primary = kNoKin;
    if (primary != before) list.isChanged = true;
    if (primary == kNoKin) return;
    for (std::size_t i = 0; i < kins.size(); ++i) {
      if (kins[i] == primary) list.primary = held.entries[i].identifier;
    }
    if (list.primary != 0) return;
    for (const auto& entry : list.entries) {
      if (entry.side == standing[primary].side && entry.from == standing[primary].from) {
        list.primary = entry.entry.identifier;
      }
    }
  }

  const FourLists& lists_;
  std::uint64_t nextIdentifier_;
  std::vector<Kin> kins_;
  Kins ourBaseKins_;
  Kins ourKins_;
  Kins theirBaseKins_;
  Kins theirKins_;
};

}  // namespace

MultiValue MergedList::value() const {
  MultiValue values;
  for (const auto& each : entries) values.entries.push_back(each.entry);
  values.primary = primary;
  return values;
}

MergedEntries mergedEntries(const FourLists& lists, std::uint64_t firstFree) {
  return EntryMerge(lists, firstFree).merged();
}

}  // namespace ox::sync
