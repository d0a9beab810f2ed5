#include "ox/transfer/person_import.hpp"

#include <functional>
#include <stdexcept>
#include <utility>

#include "ox/records/card_uid.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/vcard/write/writer.hpp"

namespace ox::vcard {
namespace {

bool sameRecord(const PropertyBag& a, const Data& imageOfA, const Card& card) {
  return sameData(imageOfA, card.photo) && sameContent(a, card.properties);
}

// Whoever was given no UID by a card bears one of its own in an export.
PropertyBag withoutUid(const PropertyBag& properties) {
  auto rest = properties;
  rest.set(property_id::kCardUid, PropertyValue());
  return rest;
}

std::string cardOf(const PropertyBag& properties, const Data& image, const Card& frame,
                   CardVersion version) {
  std::string card;
  if (frame.isGroup) {
    appendGroup(properties, frame.members, {.version = version}, card);
  } else {
    appendCard(properties, image, {.version = version}, card);
  }
  return card;
}

std::size_t sizeOf(const Card& card) {
  return roughSize(card.properties) + (card.photo ? card.photo->size() : 0);
}

}  // namespace

// What was written and read once is written again as it was, so equal cards are told by their text.
bool isOurCardOf(const Card& card, const PropertyBag& properties, const Data& image) {
  const auto stored = withoutUid(properties);
  const auto read = withoutUid(card.properties);
  const auto isSameIn = [&](CardVersion version) {
    return cardOf(stored, image, card, version) == cardOf(read, card.photo, card, version);
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
      startedEmpty_(source.recordsIn(container_, RecordKind::Person).empty()) {}

bool PersonImport::isFull() const {
  return batch_.additions.size() + batch_.replacements.size() >= kBatchCards ||
         batchBytes_ >= kBatchBytes;
}

bool PersonImport::storeMayHold(std::uint64_t hash) const {
  return !startedEmpty_ || addedHashes_.contains(hash);
}

std::optional<PersonImport::Match> PersonImport::matchByUid(const Card& card, std::string_view uid,
                                                            std::uint64_t fingerprint) {
  const auto inBatch = batchByUid_.find(std::string(uid));
  if (inBatch != batchByUid_.end()) {
    const auto& record = batch_.additions[inBatch->second];
    return Match{record.key, inBatch->second, false,
                 sameRecord(record.properties, record.image, card)};
  }
  if (!storeMayHold(std::hash<std::string_view>()(uid))) return std::nullopt;
  const auto stored = source_.recordsWithCardUid(container_, RecordKind::Person, uid);
  if (stored.empty()) return std::nullopt;
  const auto& key = stored.front();
  if (batchReplaced_.contains(key)) commit();
  return Match{key, 0, true,
               source_.committedFingerprint(key) == fingerprint || isExported(card, key)};
}

// An export leaves out what is not true any more, and spells some kept lines in another way.
bool PersonImport::isExported(const Card& card, const RecordKey& key) {
  const auto values = source_.committedValues(key);
  return values && isOurCardOf(card, *values, source_.committedImage(key));
}

std::optional<PersonImport::Match> PersonImport::matchByContent(const Card& card,
                                                                std::uint64_t fingerprint) {
  const auto [first, last] = batchByContent_.equal_range(fingerprint);
  for (auto entry = first; entry != last; ++entry) {
    const auto& record = batch_.additions[entry->second];
    if (sameRecord(record.properties, record.image, card)) {
      return Match{record.key, entry->second, false, true};
    }
  }
  if (!storeMayHold(fingerprint)) return std::nullopt;
  const auto stored = source_.recordsWithFingerprint(container_, RecordKind::Person, fingerprint);
  return stored.empty() ? std::nullopt : std::optional(Match{stored.front(), 0, true, true});
}

void PersonImport::add(const std::string& file, Card&& card, std::uint64_t fingerprint) {
  const auto* uidText = card.properties.text(property_id::kCardUid);
  const std::string uid(uidText != nullptr ? uidKey(*uidText) : std::string_view());
  const auto match =
      uid.empty() ? matchByContent(card, fingerprint) : matchByUid(card, uid, fingerprint);

  ++counted_.cards;
  if (!card.repairs.empty()) ++counted_.repaired;
  for (auto& repair : card.repairs)
    counted_.addProblem(file, repair.line, std::move(repair.reason));
  if (!match) {
    append({&file, card.line}, std::move(card), uid, fingerprint);
  } else if (match->sameContent) {
    ++counted_.skipped;
  } else if (!options_.update) {
    ++counted_.skipped;
    counted_.addProblem(file, card.line, "differs from the person with the same UID; not updated");
  } else {
    replace(*match, {&file, card.line}, std::move(card), fingerprint);
  }
}

void PersonImport::append(const Origin& origin, Card&& card, std::string_view uid,
                          std::uint64_t fingerprint) {
  ++counted_.added;
  batchBytes_ += sizeOf(card);
  const auto index = batch_.additions.size();
  if (!uid.empty()) {
    batchByUid_.emplace(uid, index);
    if (startedEmpty_) addedHashes_.insert(std::hash<std::string_view>()(uid));
  }
  batchByContent_.emplace(fingerprint, index);
  if (startedEmpty_) addedHashes_.insert(fingerprint);
  batch_.additions.push_back({RecordKey::make(RecordKind::Person), RecordKind::Person, container_,
                              std::move(card.properties), std::move(card.photo), fingerprint});
  additionOrigins_.push_back(origin);
}

void PersonImport::replace(const Match& match, const Origin& origin, Card&& card,
                           std::uint64_t fingerprint) {
  ++counted_.updated;
  batchBytes_ += sizeOf(card);
  if (startedEmpty_) addedHashes_.insert(fingerprint);
  if (match.stored) {
    batchReplaced_.insert(match.key);
    batch_.replacements.push_back({match.key, std::move(card.properties), std::move(card.photo)});
    replacementOrigins_.push_back(origin);
  } else {
    auto& record = batch_.additions[match.addition];
    batchByContent_.emplace(fingerprint, match.addition);
    record.properties = std::move(card.properties);
    record.image = std::move(card.photo);
    record.fingerprint = fingerprint;
  }
}

// Ends: what others keep changing right now is all that is tried again.
void PersonImport::commit() {
  for (auto left = writeBatch(); !left.empty(); left = writeBatch()) {
    for (auto& [origin, properties, photo, fingerprint] : left) {
      Card card;
      card.properties = std::move(properties);
      card.photo = std::move(photo);
      card.line = origin.line;
      add(*origin.file, std::move(card), fingerprint);
    }
  }
}

std::vector<PersonImport::LeftOut> PersonImport::takeLeftOut() {
  std::vector<LeftOut> left;
  for (std::size_t i = 0; i < batch_.additions.size(); ++i) {
    auto& record = batch_.additions[i];
    if (!record.leftOut) continue;
    --counted_.added;
    const auto fingerprint = contentFingerprint(record.properties, record.image);
    left.push_back(
        {additionOrigins_[i], std::move(record.properties), std::move(record.image), fingerprint});
  }
  for (std::size_t i = 0; i < batch_.replacements.size(); ++i) {
    auto& record = batch_.replacements[i];
    if (!record.leftOut) continue;
    --counted_.updated;
    const auto fingerprint = contentFingerprint(record.properties, record.image);
    left.push_back({replacementOrigins_[i], std::move(record.properties), std::move(record.image),
                    fingerprint});
  }
  counted_.cards -= left.size();
  return left;
}

std::vector<PersonImport::LeftOut> PersonImport::writeBatch() {
  std::vector<LeftOut> left;
  if (!batch_.additions.empty() || !batch_.replacements.empty()) {
    batch_.moment = moment_;
    batch_.whenOutdated = SaveRequest::WhenOutdated::LeaveOut;
    if (!source_.execute(batch_)) throw std::runtime_error(batch_.reason);
    moment_ = *batch_.moment;
    if (batch_.outdated) startedEmpty_ = false;
    left = takeLeftOut();
  }
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
