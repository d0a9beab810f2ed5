#include "ox/vcard/read/card_builder.hpp"

#include <algorithm>
#include <tuple>
#include <utility>

#include "ox/base/text/utf8.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/decode.hpp"
#include "ox/vcard/lines/line_writer.hpp"
#include "ox/vcard/lines/uri.hpp"
#include "ox/vcard/properties/exact_values.hpp"
#include "ox/vcard/properties/full_name.hpp"
#include "ox/vcard/properties/spelling.hpp"
#include "ox/vcard/unmodelled/kept_lines.hpp"
#include "ox/vcard/unmodelled/kept_texts.hpp"
#include "ox/vcard/unmodelled/revision.hpp"

namespace ox::vcard {
namespace {

// RFC 2426, section 3.5.4.
bool isNestedText(const ContentLine& line) {
  if (!isWord(line.name, "AGENT") || line.encoding != Encoding::None) return false;
  auto value = line.value;
  if (value.starts_with("\\n")) value.remove_prefix(2);
  return startsWithWord(value, "BEGIN:VCARD\\N");
}

// The line break that may stand before a nested card, with the blanks before it.
void dropBreakAfterColon(std::string& kept) {
  const auto feed = kept.find('\n');
  if (feed == std::string::npos) return;
  auto start = feed;
  while (start > 0 && isBlank(kept[start - 1])) --start;
  if (start > 0 && kept[start - 1] == ':') kept.erase(start, feed + 1 - start);
}

std::string spellingOfClean(const NameParts& parts) {
  const CardText last(parts.last);
  const CardText first(parts.first);
  const CardText middle(parts.middle);
  const CardText title(parts.title);
  const CardText suffix(parts.suffix);
  return nameSpelling({last.view(), first.view(), middle.view(), title.view(), suffix.view()});
}

}  // namespace

void CardBuilder::start(std::size_t line, const CardFacts& facts) {
  card_ = Card();
  card_.line = line;
  card_.isGroup = facts.isGroup;
  dialect_ = facts.dialect;
  is40_ = facts.is40;
  for (auto& text : texts_) text.clear();
  birthday_.reset();
  for (auto& multi : multis_) multi = {};
  grouped_.clear();
  notes_.clear();
  members_.clear();
  uid_.clear();
  fullName_.clear();
  fullNameLine_.clear();
  nameSpelling_.clear();
  fullNameDerived_ = false;
  moreFullNames_ = false;
  hasName_ = false;
  exactValues_.reset();
  unmodelled_.clear();
}

void CardBuilder::add(const ContentLine& line) {
  bool done = line.row->meaning == Meaning::Version;
  if (line.row->meaning == Meaning::FullName) {
    done = addFullName(line);
  } else if (line.row->meaning == Meaning::KeptLine) {
    done = addKeptLine(line);
  } else if (!done && line.row->meaning != Meaning::Unmodelled) {
    done = card_.isGroup ? addGroupLine(line) : addPersonLine(line);
  }
  if (done) return;
  if (unmodelled_.empty()) unmodelled_.reserve(4);
  std::string kept;
  appendKept(line, kept);
  // A nested card is kept in one form, whether its lines stood there or in a text value.
  if (dialect_ == Dialect::V30 && isNestedText(line)) {
    kept.resize(kept.size() - line.value.size());
    kept += text(line);
  }
  dropBreakAfterColon(kept);
  unmodelled_.emplace_back(std::move(kept));
}

// False when the line has to be kept as it is.
bool CardBuilder::addGroupLine(const ContentLine& line) {
  switch (line.row->meaning) {
    case Meaning::Name:
      return addName(line);
    case Meaning::Uid:
      return addUid(line);
    case Meaning::Kind:
      return true;
    case Meaning::Member: {
      auto member = std::string(uidKey(uidOf(line)));
      if (members_.insert(member).second) card_.members.push_back(std::move(member));
      return true;
    }
    default:
      return false;
  }
}

bool CardBuilder::addPersonLine(const ContentLine& line) {
  switch (line.row->meaning) {
    case Meaning::Name:
      return addName(line);
    case Meaning::Text:
      return addText(line);
    case Meaning::Organization:
      return addOrganization(line);
    case Meaning::Note:
      return addNote(line);
    case Meaning::Birthday:
      return addBirthday(line);
    case Meaning::Date:
      return addDate(line);
    case Meaning::Phone:
      return addSimple(property_id::kPhone, line, "TEL:");
    case Meaning::Email:
      return addSimple(property_id::kEmail, line, "MAILTO:");
    case Meaning::Url:
      return addSimple(property_id::kURLs, line, {});
    case Meaning::Address:
      return addAddress(line);
    case Meaning::Message:
      return addMessage(line);
    case Meaning::MessageUri:
      return addMessageUri(line);
    case Meaning::SocialProfile:
      return addSocialProfile(line);
    case Meaning::Related:
    case Meaning::RelatedTyped:
      return addRelated(line);
    case Meaning::Sound:
      return addSound(line);
    case Meaning::Photo:
      return addPhoto(line);
    case Meaning::Uid:
      return addUid(line);
    case Meaning::Label:
    case Meaning::CountryCode:
      return addGroupNote(line);
    case Meaning::ExactValues:
      return addExactValues(line);
    default:
      return false;
  }
}

std::string CardBuilder::text(const ContentLine& line) const {
  return unescaped(line.value, dialect_);
}

void CardBuilder::mend(const ContentLine& line, std::string reason) {
  card_.repairs.push_back({line.number, std::move(reason)});
}

bool CardBuilder::addExactValues(const ContentLine& line) {
  if (exactValues_) return false;
  exactValues_ = readExactValues(line.value);
  return exactValues_.has_value();
}

// A line of another card's spelling, wrapped when we wrote it.
bool CardBuilder::addKeptLine(const ContentLine& line) {
  auto text = validUtf8(percentDecoded(line.value));
  if (text.empty()) return false;
  unmodelled_.emplace_back(std::move(text));
  return true;
}

// Without N the formatted name gives the parts; beside N it is kept when it says something else.
void CardBuilder::settleNames() {
  const auto& company = single(property_id::kOrganization);
  if (fullNameDerived_ && !hasName_) return;
  if (!hasName_ && fullName_ != company) {
    const auto parts = partsOfFullName(fullName_);
    single(property_id::kFirst) = parts.first;
    single(property_id::kLast) = parts.last;
  }
  const NameParts parts{.last = single(property_id::kLast),
                        .first = single(property_id::kFirst),
                        .middle = single(property_id::kMiddle),
                        .title = single(property_id::kTitle),
                        .suffix = single(property_id::kSuffix)};
  composeFullName(parts, scratch_);
  const bool told =
      fullName_.empty() || fullName_ == scratch_ || (scratch_.empty() && fullName_ == company);
  if (told && !moreFullNames_) return;
  unmodelled_.emplace(unmodelled_.begin(), fullNameLine_);
  // What FN says counts as long as the name is the one that came with it.
  if (nameSpelling_.empty()) keepSpelling(property_id::kLast, spellingOfClean(parts));
}

// What REV is true for.
void CardBuilder::keepDigest() {
  const auto isRevision = [](const Object& kept) {
    return isWord(nameOfLine(*kept.text()), "REV");
  };
  if (std::none_of(unmodelled_.begin(), unmodelled_.end(), isRevision)) return;
  scratch_.assign(1, ':').append(digestOfValues(card_.properties)).append(1, ':');
  scratch_ += card_.isGroup ? digestOfMembers(card_.members) : digestOfPicture(card_.photo);
  unmodelled_.emplace_back(KeptDetail{property_id::kUnmodelledLines, 0, scratch_}.text());
}

// Lines in the order of the card, then details by what they belong to and what they are, so that a
// card and the one that is written of it give the same.
void CardBuilder::sortKept() {
  const auto placeOf = [](const Object& kept) {
    const auto detail = readKeptDetail(*kept.text()).value_or(KeptDetail{});
    return std::tuple(!detail.said.empty(), detail.property, detail.entry, detail.rank() != 0,
                      detail.isSpelling(), detail.isGroup());
  };
  const auto inOrder = [&](const Object& a, const Object& b) { return placeOf(a) < placeOf(b); };
  if (std::is_sorted(unmodelled_.begin(), unmodelled_.end(), inOrder)) return;
  std::stable_sort(unmodelled_.begin(), unmodelled_.end(), inOrder);
}

// By rising number, so that every value is appended.
void CardBuilder::assemblePerson() {
  auto& bag = card_.properties;
  constexpr std::size_t kUsual = 12;
  bag.reserve(kUsual);
  for (PropertyId id = property_id::kFirst; id <= property_id::kNote; ++id) {
    if (id == property_id::kBirthday) {
      if (birthday_) bag.append(id, Object(*birthday_));
    } else if (!texts_[id].empty()) {
      bag.append(id, Object(std::move(texts_[id])));
    }
  }
  for (PropertyId id = kFirstMulti; id < kFirstMulti + kMultiCount; ++id) {
    auto& held = multi(id);
    if (held.entries.empty()) continue;
    bag.append(
        id, std::make_shared<const MultiValue>(MultiValue{std::move(held.entries), held.primary}));
  }
}

Card CardBuilder::finish() {
  if (!notes_.empty()) joinGroups();
  if (!grouped_.empty()) keepGroups();
  if (card_.isGroup) {
    if (fullName_.empty() || fullNameDerived_) {
      composeFullName({.last = single(property_id::kLast), .first = single(property_id::kFirst)},
                      fullName_);
    }
    if (!fullName_.empty()) card_.properties.set(property_id::kGroupName, Object(fullName_));
  } else {
    settleNames();
    keepRanks();
    assemblePerson();
  }
  if (exactValues_) takeExactValues(*exactValues_, card_.properties);
  if (!uid_.empty()) card_.properties.set(property_id::kCardUid, Object(std::move(uid_)));
  if (!unmodelled_.empty()) {
    keepDigest();
    if (unmodelled_.size() > 1) sortKept();
    card_.properties.set(property_id::kUnmodelledLines, Object(std::move(unmodelled_)));
  }
  return std::move(card_);
}

}  // namespace ox::vcard
