#include "ox/vcard/write/unmodelled_writer.hpp"

#include <algorithm>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/markers.hpp"
#include "ox/vcard/properties/name.hpp"
#include "ox/vcard/properties/property_index.hpp"
#include "ox/vcard/unmodelled/line_form.hpp"

namespace ox::vcard {
namespace {

// A line that would make a group of a person.
bool makesGroup(const UnmodelledLine& line) {
  const bool isKind =
      isWord(line.name(), "KIND") || isWord(line.name(), "X-ADDRESSBOOKSERVER-KIND");
  return isKind && isWord(trimmed(line.text().substr(line.text().rfind(':') + 1)), "GROUP");
}

}  // namespace

// A preserved second line whose first is gone, for one.
bool UnmodelledWriter::wouldBeMisread(const UnmodelledLine& line) {
  // An N that a group came with beside its name would be read as one that says no more than FN.
  if (of_ == Of::Group) return isWord(line.name(), "N");
  if (makesGroup(line)) return true;
  const auto* row = findProperty(line.name());
  return row != nullptr && row->lacks != nullptr && row->lacks(*row, line.text(), card_);
}

bool UnmodelledWriter::writeLine(const UnmodelledLine& line) {
  if (line.isOnlyOnce() && card_.hasWritten(line.name())) return false;
  if (wouldBeMisread(line)) return false;
  const auto admitted = line.inVersion(card_.version(), room_);
  if (!admitted) return false;
  card_.line().raw(*admitted).end();
  if (line.isOnlyOnce()) card_.noteWritten(line.name());
  return true;
}

// RFC 2426, section 3.5.4: a card as a text value.
bool UnmodelledWriter::writeNestedCard(std::string_view text) {
  const auto colon = text.substr(0, text.find('\n')).find(':');
  const CardText nested(text);
  if (colon == std::string_view::npos || nested.isChanged()) return false;
  const auto head = UnmodelledLine(text.substr(0, colon + 1)).inVersion(card_.version(), room_);
  auto card = text.substr(colon + 1);
  // Older stores kept the breaks before it.
  card.remove_prefix(std::min(card.find_first_not_of(" \t\n"), card.size()));
  // Of one line it would be taken for the beginning of a card.
  if (!head || isBegin(trimmed(card))) return false;
  card_.line().raw(*head).text(card).end();
  return true;
}

void UnmodelledWriter::writeCategories(const std::vector<std::string>& categories) {
  hasCategories_ = true;
  std::string_view mark = ":";
  for (const auto& category : categories) {
    const CardText text(category);
    if (trimmed(text.view()).empty()) continue;
    if (mark == ":") card_.line().raw("CATEGORIES");
    card_.line().raw(mark).text(text.view());
    mark = ",";
  }
  if (mark == ",") card_.line().end();
}

void UnmodelledWriter::writeLines(Revision revision, NestedCards nestedCards) {
  const auto& unmodelled = card_.unmodelled();
  for (const auto text : unmodelled.lines()) {
    // One that could not be said stays in its place, where a reader leaves it.
    const bool isFormattedName = text.data() == unmodelled.formattedNameLine().data();
    if (isFormattedName && !card_.isFormattedNameUnsaid()) continue;
    const UnmodelledLine line(text);
    if (card_.isNameChanged() && isWord(line.name(), "FN")) continue;
    if (hasCategories_ && isWord(line.name(), "CATEGORIES")) continue;
    if (revision == Revision::IsOutdated && isWord(line.name(), "REV")) continue;
    const bool isNested = text.find('\n') != std::string_view::npos;
    if (isNested && nestedCards == NestedCards::LeftOut) continue;
    if (!(isNested ? writeNestedCard(text) : writeLine(line))) card_.writeWrapped(text);
  }
}

// True when the property of a single value's parameters has a line in which they could stand.
bool UnmodelledWriter::hasLineFor(const DetailView& parameters) const {
  if (of_ == Of::Person) return true;
  const auto lines = groupNameLines(card_);
  return parameters.property == property_id::kLast ? lines.hasN : lines.isFormatted;
}

void UnmodelledWriter::writeDetails() {
  const auto isOurs = [&](const DetailView& parameters) {
    if (parameters.entry != 0) return false;
    const auto property = parameters.property;
    return of_ == Of::Person
               ? property == kPhotoDetails || card_.valueOf(property) != nullptr
               : property == property_id::kGroupName || property == property_id::kLast;
  };
  for (const auto& parameters : card_.unmodelled().parameters()) {
    if (!isOurs(parameters)) continue;
    if (hasLineFor(parameters) && areAdmitted(parameters.text, card_.version())) continue;
    card_.writeWrapped(encodeDetail(parameters));
  }
  card_.writeWrappedLater();
}

}  // namespace ox::vcard
