#include "ox/vcard/read/card_builder.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/decode.hpp"
#include "ox/vcard/lines/markers.hpp"
#include "ox/vcard/properties/card_address.hpp"
#include "ox/vcard/properties/name.hpp"
#include "ox/vcard/properties/original_line.hpp"
#include "ox/vcard/properties/property_index.hpp"
#include "ox/vcard/properties/stored_values.hpp"
#include "ox/vcard/unmodelled/line_form.hpp"
#include "ox/vcard/unmodelled/revision.hpp"

namespace ox::vcard {
namespace {

// RFC 2426, section 3.5.4.
bool isNestedText(const ContentLine& line) {
  if (!isWord(line.name, "AGENT") || line.encoding != Encoding::None) return false;
  auto value = line.value;
  while (value.starts_with("\\n")) value.remove_prefix(2);
  return startsWithWord(value, "BEGIN:VCARD\\N");
}

// A card whose lines stood there.
bool isNestedCard(const ContentLine& line) {
  if (!isWord(line.name, "AGENT") || line.encoding == Encoding::Base64) return false;
  const auto start = line.value.find_first_not_of(" \t\n");
  const auto end = line.value.find('\n', std::min(start, line.value.size()));
  return end != std::string_view::npos && isBegin(line.value.substr(start, end - start));
}

// The line breaks that may stand before a nested card, with the blanks around them.
void dropBreaksAfterColon(std::string& preserved) {
  const auto feed = preserved.find('\n');
  if (feed == std::string::npos) return;
  auto start = feed;
  while (start > 0 && isBlank(preserved[start - 1])) --start;
  if (start == 0 || preserved[start - 1] != ':') return;
  preserved.erase(start, preserved.find_first_not_of(" \t\n", feed) - start);
}

bool isReadIn(const PropertyRow& row, bool isGroup) {
  return row.in == CardsWith::Both || (row.in == CardsWith::Groups) == isGroup;
}

}  // namespace

void CardBuilder::start(std::size_t line, const CardFacts& facts) {
  line_ = line;
  draft_.start(facts);
}

void CardBuilder::add(const ContentLine& line) {
  const auto* row = findProperty(line.name);
  const bool isRead =
      row != nullptr && isReadIn(*row, draft_.facts.isGroup) && row->read(*row, line, draft_);
  if (!isRead) preserve(line);
}

void CardBuilder::preserve(const ContentLine& line) {
  std::string preserved;
  if (isNestedCard(line)) {
    appendPreservedAsRead(line, preserved);
  } else {
    appendPreserved(line, draft_.facts.dialect, preserved);
  }
  // A nested card is preserved in one form, whether its lines stood there or in a text value, which
  // only 3.0 has: whoever writes one speaks it, whatever version the card around it tells.
  if (isNestedText(line)) {
    preserved.resize(preserved.size() - line.value.size());
    preserved += unescaped(line.value);
  }
  dropBreaksAfterColon(preserved);
  draft_.unmodelled.lines.push_back(std::move(preserved));
}

// REV is true for what the record says now: the digest tells later whether it still does.
void CardBuilder::preserveDigest(const Card& card) {
  const auto& lines = draft_.unmodelled.lines;
  const auto isRevision = [](const std::string& line) {
    return isWord(lineNameOf(line).name, "REV");
  };
  if (std::none_of(lines.begin(), lines.end(), isRevision)) return;
  auto digest = digestOfValues(card.properties).append(1, ':');
  digest += card.isGroup ? digestOfMembers(card.members) : digestOfPicture(card.photo);
  draft_.unmodelled.details.push_back(
      {property_id::kUnmodelledLines, 0, DetailKind::Verbatim, std::move(digest)});
}

Card CardBuilder::finish() {
  Card card;
  card.line = line_;
  card.isGroup = draft_.facts.isGroup;
  settleAddressLabels(draft_);
  draft_.groups.join(draft_.values, draft_.unmodelled, draft_.repairs);
  joinRepeatedEntries(draft_);
  std::ranges::move(draft_.name.details, std::back_inserter(draft_.unmodelled.details));
  if (card.isGroup) {
    auto name = settleGroupName(draft_);
    if (!name.empty()) card.properties.set(property_id::kGroupName, Object(std::move(name)));
  } else {
    settleName(draft_);
    draft_.preserveRanks();
    draft_.values.moveInto(card.properties);
  }
  card.photo = std::move(draft_.photo);
  card.members = std::move(draft_.members);
  card.repairs = std::move(draft_.repairs);
  if (draft_.storedValues) {
    takeStoredValues(*draft_.storedValues, draft_.unmodelled.encodedDetails(), card.properties);
  }
  if (!draft_.uid.empty()) {
    card.properties.set(property_id::kCardUid, Object(std::move(draft_.uid)));
  }
  if (!draft_.unmodelled.empty()) {
    preserveDigest(card);
    card.properties.set(property_id::kUnmodelledLines, Object(draft_.unmodelled.encoded()));
  }
  return card;
}

}  // namespace ox::vcard
