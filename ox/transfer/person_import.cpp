#include "ox/transfer/person_import.hpp"

#include <algorithm>
#include <span>
#include <stdexcept>
#include <unordered_set>
#include <utility>

#include "ox/OxAddressBookSDK/tags/tag_hold.hpp"
#include "ox/OxAddressBookSDK/tags/tag_store.hpp"
#include "ox/OxMacAddressBookSDK/ground/tag_acts.hpp"
#include "ox/base/text/keyed_hash.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/records/property_codec.hpp"
#include "ox/transfer/completed_card.hpp"
#include "ox/vcard/properties/categories.hpp"
#include "ox/vcard/write/writer.hpp"

namespace ox::vcard {
namespace {

// The store is asked about so many cards at once.
constexpr std::size_t kCardsAsked = 1000;
constexpr std::size_t kBytesAsked = 1U << 20U;

// Nearly always the fingerprints tell, or the bytes.
bool sameRecord(const NewRecord& record, const PersonCard& card) {
  if (record.fingerprint != card.fingerprint || !sameData(record.image, card.photo)) return false;
  const auto& bytes = record.encoded->bytes;
  return bytes == card.values.bytes ||
         sameContent(decodeProperties(bytes), decodeProperties(card.values.bytes));
}

// Whoever was given no UID by a card bears one of its own in an export.
PropertyBag withoutUid(const PropertyBag& properties) {
  auto rest = properties;
  rest.set(property_id::kCardUid, PropertyValue());
  return rest;
}

std::string cardOf(const PropertyBag& properties, const Data& image, const Card& frame,
                   CardVersion version, const Tags* categories) {
  std::string card;
  if (frame.isGroup) {
    appendGroup(properties, frame.members, {.version = version}, card);
  } else {
    appendCard(properties, image, {.version = version, .categories = categories}, card);
  }
  return card;
}

std::uint64_t hashOf(const std::string& uid) {
  return keyedHash(uid);
}

std::uint64_t hashOf(std::uint64_t fingerprint) {
  return keyedHash({reinterpret_cast<const char*>(&fingerprint), sizeof fingerprint});
}

void setContent(NewRecord& record, PersonCard&& card) {
  record.image = std::move(card.photo);
  record.fingerprint = card.fingerprint;
  record.encoded = std::move(card.values);
}

}  // namespace

// What was written and read once is written again as it was, so equal cards are told by their text.
bool isOurCardOf(const Card& card, const PropertyBag& properties, const Data& image,
                 const std::optional<Tags>& categories) {
  const auto stored = withoutUid(properties);
  const auto read = withoutUid(card.properties);
  const auto isSameIn = [&](CardVersion version) {
    return cardOf(stored, image, card, version, categories ? &*categories : nullptr) ==
           cardOf(read, card.photo, card, version, nullptr);
  };
  return isSameIn(CardVersion::V30) || isSameIn(CardVersion::V40);
}

PersonImport::PersonImport(ContainerSource& source, std::string container,
                           const ImportOptions& options, ImportReport& report)
    : source_(source),
      container_(std::move(container)),
      options_(options),
      report_(report),
      moment_(source.moment()),
      most_(source.mostRecords()),
      startedEmpty_(source.isEmpty(container_, RecordKind::Person)) {}

std::size_t PersonImport::batchCards() const {
  constexpr std::size_t kPartOfBook = 20;
  return std::clamp(most_ / kPartOfBook, kBatchCards, kMostBatchCards);
}

bool PersonImport::isFull() const {
  return batch_.additions.size() + batch_.replacements.size() >= batchCards() ||
         batchBytes_ >= kBatchBytes;
}

void PersonImport::add(const std::string& file, PersonCard&& card) {
  waitingBytes_ += card.size();
  waiting_.push_back({&file, std::move(card)});
  if (waiting_.size() >= kCardsAsked || waitingBytes_ >= kBytesAsked) decideWaiting();
}

void PersonImport::decideWaiting() {
  const auto stored = storedMatches();
  // Taken out first: when a card cannot be decided upon, the import is over.
  auto waiting = std::exchange(waiting_, {});
  waitingBytes_ = 0;
  for (std::size_t i = 0; i < waiting.size(); ++i) decide(std::move(waiting[i]), stored[i]);
}

bool PersonImport::storeMayHold(const PersonCard& card) const {
  if (!startedEmpty_) return true;
  return addedHashes_.contains(card.uid.empty() ? hashOf(card.fingerprint) : hashOf(card.uid));
}

void PersonImport::noteAdded(std::uint64_t hash) {
  if (startedEmpty_) addedHashes_.insert(hash);
}

std::vector<PersonImport::Stored> PersonImport::storedMatches() {
  std::vector<Stored> stored(waiting_.size());
  std::vector<SoughtRecord> sought;
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < waiting_.size(); ++i) {
    const auto& card = waiting_[i].card;
    if (!storeMayHold(card)) continue;
    sought.push_back({card.uid, card.fingerprint});
    places.push_back(i);
  }
  if (sought.empty()) return stored;
  const auto found = source_.matches(container_, RecordKind::Person, sought);
  for (std::size_t i = 0; i < found.size(); ++i) {
    if (found[i].empty()) continue;
    const auto& first = found[i].front();
    stored[places[i]] = {first.key, first.fingerprint == sought[i].fingerprint};
  }
  compareContents(stored);
  return stored;
}

// An export leaves out what is not true any more, and spells some kept lines in another way: what
// differs by its fingerprint may still be the same card.
void PersonImport::compareContents(std::vector<Stored>& stored) {
  RecordKeys keys;
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < stored.size(); ++i) {
    if (stored[i].key.isNone() || stored[i].sameContent) continue;
    keys.push_back(stored[i].key);
    places.push_back(i);
  }
  for (std::size_t done = 0; done < keys.size();) {
    const auto contents = source_.committedContents(std::span(keys).subspan(done), kBytesAsked);
    for (const auto& [values, picture] : contents) {
      const auto place = places[done++];
      auto& card = waiting_[place].card;
      if (!values) continue;
      // What a file that tells a part does not say of categories is as it is stored.
      const bool hasStoredCategories = card.named && card.categories.empty();
      if (card.named) card = completedCard(std::move(card), *values, picture, options_.categories);
      const auto categories =
          hasStoredCategories ? std::nullopt : comparedCategories(card, keys[done - 1], *values);
      stored[place].sameContent = isOurCardOf(cardOf(card), *values, picture, categories);
    }
  }
}

// A card that says no category does not say that there is none.
std::optional<Tags> PersonImport::comparedCategories(const PersonCard& card, const RecordKey& key,
                                                     const PropertyBag& values) {
  if (card.categories.empty()) {
    return categoriesOf(values).empty() ? std::nullopt : std::optional(Tags());
  }
  const auto tags = tags_.of(key);
  return tags ? categoriesToWrite(values, *tags) : std::nullopt;
}

std::size_t PersonImport::additionOf(const PersonCard& card) const {
  const auto none = batch_.additions.size();
  if (!card.uid.empty()) {
    const auto known = batchByUid_.find(card.uid);
    return known != batchByUid_.end() ? known->second : none;
  }
  const auto [first, last] = batchByContent_.equal_range(card.fingerprint);
  const auto same = std::find_if(first, last, [&](const auto& entry) {
    return sameRecord(batch_.additions[entry.second], card);
  });
  return same != last ? same->second : none;
}

bool PersonImport::isSameAsStored(const PersonCard& card, const Stored& stored) const {
  const auto replaced = batchReplaced_.find(stored.key);
  if (replaced == batchReplaced_.end() || card.uid.empty()) return stored.sameContent;
  const auto& record = batch_.replacements[replaced->second];
  const auto read = cardOf(card);
  const bool isSame =
      sameData(record.image, read.photo) && sameContent(record.properties, read.properties);
  return isSame || isOurCardOf(read, record.properties, record.image);
}

// What this batch is going to write counts before what is stored.
void PersonImport::decide(Waiting&& waiting, const Stored& stored) {
  ++counted_.cards;
  if (!waiting.card.repairs.empty()) ++counted_.repaired;
  for (auto& repair : waiting.card.repairs) {
    counted_.addProblem(*waiting.file, repair.line, std::move(repair.reason));
  }
  const auto addition = additionOf(waiting.card);
  const bool isInBatch = addition < batch_.additions.size();
  if (!isInBatch && stored.key.isNone()) return append(std::move(waiting));
  const bool same = isInBatch ? sameRecord(batch_.additions[addition], waiting.card)
                              : isSameAsStored(waiting.card, stored);
  if (!isInBatch) noteMember(waiting.card, stored.key);
  const bool isSkipped = same || !options_.update;
  if (isSkipped) {
    ++counted_.skipped;
    const auto file = static_cast<std::size_t>(waiting.file - report_.files.data());
    counted_.skippedCards.push_back({file, waiting.card.line, !same});
  }
  if (same) return;
  if (isSkipped) {
    counted_.addProblem(*waiting.file, waiting.card.line,
                        "differs from the person with the same UID; not updated");
  } else if (isInBatch) {
    replaceAddition(addition, std::move(waiting));
  } else {
    replaceStored(stored.key, std::move(waiting));
  }
}

void PersonImport::append(Waiting&& waiting) {
  ++counted_.added;
  auto& card = waiting.card;
  batchBytes_ += card.size();
  const auto index = batch_.additions.size();
  if (!card.uid.empty()) {
    noteAdded(hashOf(card.uid));
    batchByUid_.emplace(std::move(card.uid), index);
  }
  noteAdded(hashOf(card.fingerprint));
  batchByContent_.emplace(card.fingerprint, index);
  additionOrigins_.push_back({waiting.file, card.line});
  auto& record = batch_.additions.emplace_back();
  record.key = RecordKey::make(RecordKind::Person);
  record.container = container_;
  if (options_.categories == CategoriesAs::Tags) {
    noteTags(record.key, card, {});
  } else if (!card.categories.empty()) {
    newMembers_[record.key] = card.categories;
  }
  setContent(record, std::move(card));
}

void PersonImport::replaceAddition(std::size_t addition, Waiting&& waiting) {
  ++counted_.updated;
  auto& card = waiting.card;
  batchBytes_ += card.size();
  noteAdded(hashOf(card.fingerprint));
  batchByContent_.emplace(card.fingerprint, addition);
  const auto key = batch_.additions[addition].key;
  // A card that says no category changes none.
  if (options_.categories == CategoriesAs::Tags) {
    noteTags(key, card, {});
  } else if (!card.categories.empty()) {
    newMembers_[key] = card.categories;
  }
  setContent(batch_.additions[addition], std::move(card));
}

void PersonImport::replaceStored(const RecordKey& key, Waiting&& waiting) {
  ++counted_.updated;
  auto& card = waiting.card;
  batchBytes_ += card.size();
  noteAdded(hashOf(card.fingerprint));
  if (options_.categories == CategoriesAs::Tags && !card.categories.empty()) {
    const auto values = source_.committedValues(key);
    noteTags(key, card, values ? categoriesOf(*values) : Tags());
  }
  const auto [known, isNew] = batchReplaced_.emplace(key, batch_.replacements.size());
  if (isNew) {
    replacementOrigins_.emplace_back();
    batch_.replacements.emplace_back().key = key;
  }
  replacementOrigins_[known->second] = {waiting.file, card.line};
  auto& record = batch_.replacements[known->second];
  record.properties = decodeProperties(card.values.bytes);
  record.image = std::move(card.photo);
}

// Ends: what others keep changing right now is all that is tried again.
void PersonImport::commit() {
  decideWaiting();
  for (auto left = writeBatch(); !left.empty(); left = writeBatch()) {
    waiting_ = std::move(left);
    decideWaiting();
  }
}

std::vector<PersonImport::Waiting> PersonImport::takeLeftOut() {
  std::vector<Waiting> left;
  const auto take = [&](Card&& card, const Origin& origin) {
    card.line = origin.line;
    left.push_back({origin.file, personCard(std::move(card), options_.categories)});
  };
  for (std::size_t i = 0; i < batch_.additions.size(); ++i) {
    auto& record = batch_.additions[i];
    if (!record.leftOut) continue;
    --counted_.added;
    Card card;
    card.properties = decodeProperties(record.encoded->bytes);
    card.photo = std::move(record.image);
    take(std::move(card), additionOrigins_[i]);
  }
  for (std::size_t i = 0; i < batch_.replacements.size(); ++i) {
    auto& record = batch_.replacements[i];
    if (!record.leftOut) continue;
    --counted_.updated;
    Card card;
    card.properties = std::move(record.properties);
    card.photo = std::move(record.image);
    take(std::move(card), replacementOrigins_[i]);
  }
  counted_.cards -= left.size();
  return left;
}

// The tags that the former card gave go, those that the person was given otherwise stay.
void PersonImport::noteTags(const RecordKey& person, const PersonCard& card, Tags removed) {
  if (card.categories.empty()) return;
  const std::unordered_set<std::string> said(card.categories.begin(), card.categories.end());
  std::erase_if(removed, [&](const std::string& tag) { return said.contains(tag); });
  tagEdits_[person] = {std::move(removed), card.categories};
}

void PersonImport::noteMember(const PersonCard& card, const RecordKey& person) {
  if (options_.categories != CategoriesAs::Groups) return;
  for (const auto& category : card.categories) categoryMembers_[category].push_back(person);
}

// Persons and their tags, or neither.
bool PersonImport::execute() {
  if (tagEdits_.empty()) return source_.execute(batch_);
  const TagHold hold;
  const auto manager = tagManagerOf(container_);
  for (const auto& [person, edit] : tagEdits_) {
    TagStore::shared().change(manager, person.text(), edit.removed, edit.added);
  }
  bool tagsAreSafe = false;
  return executeWithTags(batch_, {}, tagsAreSafe);
}

std::vector<PersonImport::Waiting> PersonImport::writeBatch() {
  std::vector<Waiting> left;
  if (!batch_.additions.empty() || !batch_.replacements.empty()) {
    batch_.moment = moment_;
    batch_.whenOutdated = SaveRequest::WhenOutdated::LeaveOut;
    if (!execute()) throw std::runtime_error(batch_.reason);
    moment_ = *batch_.moment;
    if (batch_.outdated) startedEmpty_ = false;
    left = takeLeftOut();
  }
  for (const auto& record : batch_.additions) {
    const auto known = newMembers_.find(record.key);
    if (record.leftOut || known == newMembers_.end()) continue;
    for (const auto& category : known->second) categoryMembers_[category].push_back(record.key);
  }
  tagEdits_.clear();
  newMembers_.clear();
  most_ += batch_.additions.size();
  report_.takeCounts(counted_);
  additionOrigins_.clear();
  replacementOrigins_.clear();
  batch_ = {};
  batchBytes_ = 0;
  batchByUid_.clear();
  batchByContent_.clear();
  batchReplaced_.clear();
  return left;
}

}  // namespace ox::vcard
