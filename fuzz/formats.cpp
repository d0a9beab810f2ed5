// Tables and LDIF: whatever the bytes are, they are read to the end; each card becomes JSON, and a
// person of it a row of our table and an entry of a directory that read back as they were written.
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/require.hpp"
#include "ox/base/text/utf8.hpp"
#include "ox/formats/json/jcard.hpp"
#include "ox/formats/json/jscontact.hpp"
#include "ox/formats/ldif/directory_source.hpp"
#include "ox/formats/ldif/ldif_writer.hpp"
#include "ox/formats/table/table_source.hpp"
#include "ox/formats/table/table_writer.hpp"
#include "ox/records/clean_text.hpp"
#include "ox/vcard/write/writer.hpp"

namespace {

using namespace ox;
using namespace ox::formats;
using vcard::Card;

std::string cardText(const Card& card) {
  std::string text;
  // Every card of an export has a UID.
  const vcard::WriteOptions options{.version = vcard::CardVersion::V40, .uid = "none"};
  if (card.isGroup) {
    vcard::appendGroup(card.properties, card.members, options, text);
  } else {
    vcard::appendCard(card.properties, card.photo, options, text);
  }
  return text;
}

std::string tableOf(const Card& card) {
  const auto text = cardText(card);
  const auto fields = fieldsOf(WrittenCard(text));
  TableWriter table;
  table.count(fields);
  return table.header() + table.row(fields);
}

std::string directoryOf(const Card& card) {
  const auto text = cardText(card);
  const WrittenCard written(text);
  std::string file(kLdifHeader);
  return file + (card.isGroup ? ldifOf(groupFieldsOf(written)) : ldifOf(fieldsOf(written)));
}

template <typename Source>
Card readAgain(const std::string& file) {
  vcard::MemorySource bytes(file);
  Source source(bytes);
  auto result = source.next();
  fuzz::require(result && std::holds_alternative<Card>(*result));
  auto card = std::get<Card>(*std::move(result));
  cleanText(card.properties);
  fuzz::require(!source.next());
  return card;
}

void requireJson(const Card& card) {
  const auto text = cardText(card);
  for (auto* write : {writeJCard, writeJsContact}) {
    JsonWriter out;
    write(WrittenCard(text), out);
    fuzz::require(isValidUtf8(out.text()));
    for (const char c : out.text()) fuzz::require(static_cast<unsigned char>(c) >= 0x20U);
  }
}

void requireSame(const Card& card) {
  requireJson(card);
  const auto entry = directoryOf(card);
  fuzz::require(directoryOf(readAgain<DirectorySource>(entry)) == entry);
  if (card.isGroup) return;
  const auto table = tableOf(card);
  if (fieldsOf(WrittenCard(cardText(card))).isEmpty()) return;
  fuzz::require(tableOf(readAgain<TableSource>(table)) == table);
}

template <typename Source>
void readAll(std::string_view file) {
  vcard::MemorySource bytes(file);
  Source source(bytes);
  try {
    while (auto result = source.next()) {
      source.takeRemarks();
      auto* card = std::get_if<Card>(&*result);
      if (card == nullptr) continue;
      cleanText(card->properties);
      requireSame(*card);
    }
  } catch (const FormatError&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view file(reinterpret_cast<const char*>(data), size);
  readAll<TableSource>(file);
  readAll<DirectorySource>(file);
  return 0;
}
