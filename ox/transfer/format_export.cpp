#include "ox/transfer/format_export.hpp"

#include "ox/base/json_writer.hpp"
#include "ox/formats/json/jcard.hpp"
#include "ox/formats/json/jscontact.hpp"
#include "ox/formats/ldif/ldif_writer.hpp"
#include "ox/formats/table/table_writer.hpp"
#include "ox/platform/store/pinned_moment.hpp"

namespace ox::formats {
namespace {

using vcard::CardSink;
using vcard::CardVersion;
using vcard::ExportReport;

// A list in JSON, an element a line.
template <typename Write>
ExportReport exportJson(const RecordKeys& persons, const RecordKeys& groups, const CardSink& sink,
                        vcard::Unreadable unreadable, Write write) {
  bool isFirst = true;
  const auto take = [&](std::string_view text) {
    JsonWriter element;
    write(WrittenCard(text), element);
    std::string piece(isFirst ? "[\n" : ",\n");
    isFirst = false;
    return sink(piece.append(element.text()));
  };
  auto report = vcard::exportCards(persons, groups, CardVersion::V40, take, unreadable);
  if (!report.stopped) report.stopped = !sink(isFirst ? "[]\n" : "\n]\n");
  return report;
}

// The persons are read twice: the header tells how many values there are of each kind.
ExportReport exportTable(const RecordKeys& persons, const CardSink& sink,
                         vcard::Unreadable unreadable) {
  const PinnedMoment moment;
  TableWriter table;
  const auto count = [&](std::string_view card) {
    table.count(fieldsOf(WrittenCard(card)));
    return true;
  };
  vcard::exportCards(persons, {}, CardVersion::V40, count, unreadable);
  bool isFirst = true;
  const auto take = [&](std::string_view card) {
    auto piece = isFirst ? table.header() : std::string();
    isFirst = false;
    return sink(piece.append(table.row(fieldsOf(WrittenCard(card)))));
  };
  auto report = vcard::exportCards(persons, {}, CardVersion::V40, take, unreadable);
  if (isFirst && !report.stopped) report.stopped = !sink(table.header());
  return report;
}

std::string entryOf(const WrittenCard& card) {
  return card.isGroup() ? ldifOf(groupFieldsOf(card)) : ldifOf(fieldsOf(card));
}

ExportReport exportLdif(const RecordKeys& persons, const RecordKeys& groups, const CardSink& sink,
                        vcard::Unreadable unreadable) {
  bool isFirst = true;
  const auto take = [&](std::string_view card) {
    std::string piece(isFirst ? kLdifHeader : std::string_view());
    isFirst = false;
    return sink(piece.append(entryOf(WrittenCard(card))));
  };
  auto report = vcard::exportCards(persons, groups, CardVersion::V40, take, unreadable);
  if (isFirst && !report.stopped) report.stopped = !sink(kLdifHeader);
  return report;
}

}  // namespace

ExportReport exportAs(Format format, const RecordKeys& persons, const RecordKeys& groups,
                      const CardSink& sink, vcard::Unreadable unreadable) {
  switch (format) {
    case Format::JCard:
      return exportJson(persons, groups, sink, unreadable, writeJCard);
    case Format::JsContact:
      return exportJson(persons, groups, sink, unreadable, writeJsContact);
    case Format::Csv:
      return exportTable(persons, sink, unreadable);
    case Format::Ldif:
      break;
  }
  return exportLdif(persons, groups, sink, unreadable);
}

}  // namespace ox::formats
