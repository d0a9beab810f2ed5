#include "ox/vcard/write/writer.hpp"

#include "ox/vcard/properties/name.hpp"
#include "ox/vcard/properties/property_index.hpp"
#include "ox/vcard/properties/stored_values.hpp"
#include "ox/vcard/properties/uid.hpp"
#include "ox/vcard/unmodelled/revision.hpp"
#include "ox/vcard/write/unmodelled_writer.hpp"

namespace ox::vcard {
namespace {

using Revision = UnmodelledWriter::Revision;
using NestedCards = UnmodelledWriter::NestedCards;

void begin(PropertyWriter& card) {
  card.line().raw("BEGIN:VCARD").end();
  card.line().raw(card.is30() ? "VERSION:3.0" : "VERSION:4.0").end();
}

void end(PropertyWriter& card) {
  card.line().raw("END:VCARD").end();
}

// REV is outdated when what it was true for is not what is written. An empty `rest` is not known.
Revision revisionOf(const PropertyWriter& card, std::string_view rest) {
  const auto digests = card.unmodelled().verbatimOf(property_id::kUnmodelledLines, 0);
  if (digests.empty()) return Revision::IsTrue;  // from a store that kept no more than the line
  const auto colon = digests.find(':');
  if (colon == std::string_view::npos) return Revision::IsOutdated;
  if (!rest.empty() && digests.substr(colon + 1) != rest) return Revision::IsOutdated;
  return digests.substr(0, colon) == digestOfValues(card.properties()) ? Revision::IsTrue
                                                                       : Revision::IsOutdated;
}

void writeStoredValues(PropertyWriter& card) {
  if (!card.hasInexact()) return;
  PropertyBag stored;
  for (const auto& [id, value] : card.properties().entries()) {
    if (card.isInexact(id) && fitsType(value, property_table::typeOf(id))) {
      stored.append(id, asNumbered(value));
    }
  }
  if (stored.empty()) return;
  card.line().raw(kStoredValuesName).raw(":").raw(storedTextOf(stored)).end();
}

}  // namespace

void appendCard(const PropertyBag& properties, const Data& photo, const WriteOptions& options,
                std::string& out) {
  PropertyWriter card({properties, photo, options.uid}, options.version, out);
  // Whoever leaves nested cards out leaves the picture out as well.
  const auto revision =
      revisionOf(card, options.nestedCards ? digestOfPicture(photo) : std::string());
  begin(card);
  writeProperties(card);
  UnmodelledWriter unmodelled(card, UnmodelledWriter::Of::Person);
  if (options.categories != nullptr) unmodelled.writeCategories(*options.categories);
  // Its categories are not those that REV came with.
  unmodelled.writeLines(options.categories != nullptr ? Revision::IsOutdated : revision,
                        options.nestedCards ? NestedCards::Written : NestedCards::LeftOut);
  unmodelled.writeDetails();
  writeStoredValues(card);
  end(card);
}

std::string writeCard(const PropertyBag& properties, const Data& photo,
                      const WriteOptions& options) {
  std::string card;
  appendCard(properties, photo, options, card);
  return card;
}

void appendGroup(const PropertyBag& properties, const std::vector<std::string>& members,
                 const WriteOptions& options, std::string& out) {
  const Data noPhoto;
  PropertyWriter card({properties, noPhoto, options.uid}, options.version, out);
  begin(card);
  writeGroupName(card);
  card.line().raw(card.is30() ? "X-ADDRESSBOOKSERVER-KIND:group" : "KIND:group").end();
  card.noteWritten("KIND");
  writeUidLine(card);
  for (const auto& member : members) writeMember(member, card);
  UnmodelledWriter unmodelled(card, UnmodelledWriter::Of::Group);
  const auto name = card.unmodelled().formattedNameLine();
  if (!name.empty() && !unmodelled.writeLine(UnmodelledLine(name))) card.writeWrapped(name);
  unmodelled.writeLines(revisionOf(card, digestOfMembers(members)),
                        options.nestedCards ? NestedCards::Written : NestedCards::LeftOut);
  unmodelled.writeDetails();
  end(card);
}

}  // namespace ox::vcard
