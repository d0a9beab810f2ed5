#include "ox/sync/cards/card_merge.hpp"

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

#include "ox/sync/cards/conflict_value.hpp"
#include "ox/sync/cards/parts/card_parts.hpp"
#include "ox/sync/cards/parts/entry_merge.hpp"
#include "ox/sync/cards/parts/property_words.hpp"
#include "ox/sync/cards/parts/text_sets.hpp"

namespace ox::sync {
namespace {

using vcard::PropertyDetail;
using Side = MergedEntry::Side;

// One content, sorted out.
struct Sorted {
  explicit Sorted(const CardContent& content)
      : whole(content), parts(partsOf(content.properties)) {}

  const CardContent& whole;
  CardParts parts;
};

MultiValue entriesOf(const PropertyValue& value) {
  const auto* held = std::get_if<MultiValuePtr>(&value);
  return held != nullptr && *held ? **held : MultiValue();
}

PropertyValue valueOfEntries(MultiValue values) {
  if (values.entries.empty()) return {};
  return MultiValuePtr(std::make_shared<const MultiValue>(std::move(values)));
}

// FN, N and the readings stand for all of them.
bool isNamePart(PropertyId property) {
  using namespace property_id;
  return property <= kSuffix || (property >= kFirstPhonetic && property <= kLastPhonetic);
}

class Merge {
 public:
  Merge(const CardContent& theirBase, const CardContent& theirs, const CardContent& ourBase,
        const CardContent& ours)
      : theirBase_(theirBase), theirs_(theirs), ourBase_(ourBase), ours_(ours) {
    result_.content = ours;
    result_.forThem = theirs;
    us_ = ours_.parts;
    them_ = theirs_.parts;
    us_.details.clear();
    them_.details.clear();
  }

  MergedCard merged() {
    mergeValues();
    mergeLines();
    mergePhoto();
    mergeTexts(&CardContent::categories, Case::Counts);
    mergeTexts(&CardContent::members, Case::CountsNot);
    takeCardLines();
    result_.content.properties = bagOf(std::move(us_));
    result_.forThem.properties = bagOf(std::move(them_));
    for (auto* content : {&result_.content, &result_.forThem}) {
      if (!content->isGroup) dropFormerName(content->properties);
    }
    return std::move(result_);
  }

 private:
  void mergeValues() {
    const auto ids = propertiesIn({&theirBase_.parts.values, &theirs_.parts.values,
                                   &ourBase_.parts.values, &ours_.parts.values});
    bool isTheirName = false;
    for (const auto id : ids) {
      const bool isList = std::ranges::any_of(
          std::array{&theirBase_, &theirs_, &ourBase_, &ours_}, [&](const Sorted* side) {
            return std::holds_alternative<MultiValuePtr>(side->parts.values.value(id));
          });
      if (isList) {
        mergeEntries(id);
      } else {
        const bool isTheirs = mergeSingle(id);
        isTheirName |= isTheirs && isNamePart(id);
        if (!isNamePart(id)) takeSingleDetails(id, isTheirs);
      }
    }
    for (PropertyId id = property_id::kFirst; id <= property_id::kLastPhonetic; ++id) {
      if (isNamePart(id)) takeSingleDetails(id, isTheirName || areTheirDetailsNew(id));
    }
  }

  // True when the record takes their value.
  bool mergeSingle(PropertyId id) {
    const auto& theirBase = theirBase_.parts.values.value(id);
    const auto& theirs = theirs_.parts.values.value(id);
    const auto& ourBase = ourBase_.parts.values.value(id);
    const auto& ours = ours_.parts.values.value(id);
    const bool isOurChange = !sameValue(ourBase, ours);
    const bool isTheirChange = !sameValue(theirBase, theirs);
    if (!isOurChange && !isTheirChange) return areTheirDetailsNew(id) && sameValue(ours, theirs);
    if (sameValue(ours, theirs)) return areTheirDetailsNew(id);
    const bool isTheirs = isTheirChange && !(isOurChange && isMissing(theirs));
    if (isTheirs && isOurChange && !isMissing(ours)) {
      addConflict(wordFor(id), encodedSingle(id, theirs), encodedSingle(id, ours),
                  encodedSingle(id, ourBase));
    }
    if (isTheirs) {
      us_.values.set(id, theirs);
      result_.changesOurs = true;
    } else {
      them_.values.set(id, ours);
      result_.changesTheirs = true;
    }
    return isTheirs;
  }

  bool areTheirDetailsNew(PropertyId id) const {
    return !tellTheSame(detailsOf(theirBase_.parts.details, id, 0),
                        detailsOf(theirs_.parts.details, id, 0));
  }

  void takeSingleDetails(PropertyId id, bool isTheirs) {
    const auto ours = detailsOf(ours_.parts.details, id, 0);
    const auto theirs = detailsOf(theirs_.parts.details, id, 0);
    append(us_.details, isTheirs ? theirs : ours);
    const bool isSaidHere = sameValue(them_.values.value(id), theirs_.parts.values.value(id));
    append(them_.details, isSaidHere ? theirs : ours);
    if (isTheirs && !tellTheSame(ours, theirs)) result_.changesOurs = true;
  }

  void mergeEntries(PropertyId id) {
    const FourLists lists{
        entriesOf(ourBase_.parts.values.value(id)), entriesOf(ours_.parts.values.value(id)),
        entriesOf(theirBase_.parts.values.value(id)), entriesOf(theirs_.parts.values.value(id))};
    auto merged = mergedEntries(lists, firstFreeIdentifier(id, lists));
    takeNewSpellings(id, lists, merged.forUs);
    takeEntryDetails(id, merged.forUs, us_);
    takeEntryDetails(id, merged.forThem, them_);
    us_.values.set(id, valueOfEntries(merged.forUs.value()));
    them_.values.set(id, valueOfEntries(merged.forThem.value()));
    result_.changesOurs |= merged.forUs.isChanged;
    result_.changesTheirs |= merged.forThem.isChanged;
    for (const auto& conflict : merged.conflicts) {
      addConflict(wordFor(id), encodedEntry(id, conflict.theirs), encodedEntry(id, conflict.ours),
                  encodedEntry(id, conflict.base));
    }
  }

  std::uint64_t firstFreeIdentifier(PropertyId id, const FourLists& lists) const {
    std::uint64_t highest = 0;
    for (const auto* list : {&lists.ourBase, &lists.ours, &lists.theirBase, &lists.theirs}) {
      for (const auto& entry : list->entries) highest = std::max(highest, entry.identifier);
    }
    // What is known of entries that are gone must not be believed of new ones.
    for (const auto* side : {&ours_, &theirs_}) {
      for (const auto& detail : side->parts.details) {
        if (detail.property == id) highest = std::max(highest, detail.entry);
      }
    }
    return highest + 1;
  }

  // Where their text says an entry otherwise than it did, but says the same, the record is to know.
  void takeNewSpellings(PropertyId id, const FourLists& lists, MergedList& list) {
    const auto origins = originsOf(lists.theirBase, lists.theirs, Identifiers::TellNothing);
    MultiValue held = list.value();
    const auto places = originsOf(held, lists.theirs, Identifiers::TellNothing);
    for (std::size_t i = 0; i < lists.theirs.entries.size(); ++i) {
      if (origins[i] == kNewEntry || places[i] == kNewEntry) continue;
      const auto& theirs = lists.theirs.entries[i];
      const auto& before = lists.theirBase.entries[origins[i]];
      auto& entry = list.entries[places[i]];
      const bool isSame = entry.entry.label == theirs.label && entry.entry.value == theirs.value;
      if (!isSame || entry.side == Side::Theirs) continue;
      const auto now = detailsOf(theirs_.parts.details, id, theirs.identifier);
      if (tellTheSame(now, detailsOf(theirBase_.parts.details, id, before.identifier))) continue;
      if (tellTheSame(now, detailsOf(ours_.parts.details, id, entry.from))) continue;
      entry.side = Side::Theirs;
      entry.from = theirs.identifier;
      list.isChanged = true;
    }
  }

  void takeEntryDetails(PropertyId id, const MergedList& list, CardParts& parts) const {
    for (const auto& entry : list.entries) {
      const auto& side = entry.side == Side::Ours ? ours_ : theirs_;
      for (auto& detail : detailsOf(side.parts.details, id, entry.from)) {
        detail.entry = entry.entry.identifier;
        parts.details.push_back(std::move(detail));
      }
    }
  }

  void mergeLines() {
    const FourLists lists{ourBase_.parts.lines, ours_.parts.lines, theirBase_.parts.lines,
                          theirs_.parts.lines};
    std::size_t most = 0;
    for (const auto* list : {&lists.ourBase, &lists.ours, &lists.theirBase, &lists.theirs}) {
      most = std::max(most, list->entries.size());
    }
    const auto merged = mergedEntries(lists, most + 1);
    us_.lines = merged.forUs.value();
    them_.lines = merged.forThem.value();
    result_.changesOurs |= merged.forUs.isChanged;
    result_.changesTheirs |= merged.forThem.isChanged;
    for (const auto& conflict : merged.conflicts) {
      addConflict(wordForLine(*conflict.theirs.label), encodedLine(conflict.theirs),
                  encodedLine(conflict.ours), encodedLine(conflict.base));
    }
  }

  void mergePhoto() {
    const auto& theirs = theirs_.whole.photo;
    const auto& ours = ours_.whole.photo;
    const bool isOurChange = !sameData(ourBase_.whole.photo, ours);
    const bool isTheirChange = !sameData(theirBase_.whole.photo, theirs);
    const bool areSame = sameData(ours, theirs);
    const bool isTheirs = isTheirChange && !areSame && !(isOurChange && !theirs);
    const bool isOurs = isOurChange && !areSame && !isTheirs;
    if (isTheirs) {
      if (isOurChange && ours) {
        addConflict(std::string(kPhotoWord), encodedPhoto(theirs), encodedPhoto(ours),
                    encodedPhoto(ourBase_.whole.photo));
      }
      result_.content.photo = theirs;
      result_.changesOurs = true;
    }
    if (isOurs) {
      result_.forThem.photo = ours;
      result_.changesTheirs = true;
    }
    const auto id = vcard::kPhotoDetails;
    const bool isNewSpelling = areSame && areTheirDetailsNew(id);
    const auto ourDetails = detailsOf(ours_.parts.details, id, 0);
    const auto theirDetails = detailsOf(theirs_.parts.details, id, 0);
    append(us_.details, isTheirs || isNewSpelling ? theirDetails : ourDetails);
    append(them_.details, isOurs ? ourDetails : theirDetails);
    if (isNewSpelling && !tellTheSame(ourDetails, theirDetails)) result_.changesOurs = true;
  }

  void mergeTexts(std::vector<std::string> CardContent::*list, Case letters) {
    const auto& ours = ours_.whole.*list;
    const auto& theirs = theirs_.whole.*list;
    auto forUs = withChanges(ours, theirBase_.whole.*list, theirs, letters);
    auto forThem = withChanges(theirs, ourBase_.whole.*list, ours, letters);
    if (!areSameTexts(forUs, ours, letters)) {
      result_.changesOurs = true;
      result_.content.*list = std::move(forUs);
    }
    if (!areSameTexts(forThem, theirs, letters)) {
      result_.changesTheirs = true;
      result_.forThem.*list = std::move(forThem);
    }
  }

  // A record that says what the card says is as old as the card says.
  void takeCardLines() {
    if (!result_.changesOurs || result_.changesTheirs) return;
    us_.cardLines = theirs_.parts.cardLines;
    us_.cardDetails = theirs_.parts.cardDetails;
    result_.content.categoryLines = theirs_.whole.categoryLines;
  }

  void addConflict(std::string property, std::string theirs, std::string ours, std::string base) {
    result_.conflicts.push_back(
        {std::move(property), std::move(theirs), std::move(ours), std::move(base)});
  }

  static void append(std::vector<PropertyDetail>& details,
                     const std::vector<PropertyDetail>& more) {
    details.insert(details.end(), more.begin(), more.end());
  }

  Sorted theirBase_;
  Sorted theirs_;
  Sorted ourBase_;
  Sorted ours_;
  CardParts us_;
  CardParts them_;
  MergedCard result_;
};

}  // namespace

MergedCard merge(const CardContent* theirBase, const CardContent& theirs,
                 const CardContent* ourBase, const CardContent& ours) {
  const CardContent nothing;
  const bool haveMet = theirBase != nullptr && ourBase != nullptr;
  return Merge(haveMet ? *theirBase : nothing, theirs, haveMet ? *ourBase : nothing, ours).merged();
}

}  // namespace ox::sync
