#include "ox/records/tag_change.hpp"

#include <utility>

#include "ox/records/packed_bytes.hpp"

namespace ox {
namespace {

constexpr char kVersion = 1;

using Reader = PackedReader<DamagedTagChange>;

Reader readerOf(std::string_view bytes) {
  return {bytes, kVersion, "a stored change of tags is damaged"};
}

void writeTexts(PackedWriter& writer, const std::vector<std::string>& texts) {
  writer.number(texts.size());
  for (const auto& text : texts) writer.text(text);
}

std::vector<std::string> readTexts(Reader& reader) {
  std::vector<std::string> texts(reader.count(1));
  for (auto& text : texts) text = reader.text();
  return texts;
}

}  // namespace

StoredTagChange encodeTagChange(const TagChange& change) {
  PackedWriter before(kVersion);
  before.text(change.manager);
  before.text(change.person);
  writeTexts(before, change.before);
  PackedWriter after(kVersion);
  writeTexts(after, change.after);
  return {std::move(before).withChecksum(), std::move(after).withChecksum()};
}

TagChange decodeTagChange(std::string_view before, std::string_view after) {
  TagChange change;
  auto older = readerOf(before);
  change.manager = older.text();
  change.person = older.text();
  change.before = readTexts(older);
  older.end();
  auto newer = readerOf(after);
  change.after = readTexts(newer);
  newer.end();
  return change;
}

}  // namespace ox
