#include "ox/sync/run/look/agreed.hpp"

#include <array>
#include <cstring>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <variant>

#include "ox/base/checksum.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/records/damaged_bytes.hpp"
#include "ox/records/packed_bytes.hpp"
#include "ox/records/property_codec.hpp"
#include "ox/sync/cards/card_edit.hpp"
#include "ox/sync/cards/packed_card.hpp"

namespace ox::sync {
namespace {

constexpr char kListVersion = 1;

std::string packedList(const std::vector<std::string>& texts) {
  if (texts.empty()) return {};
  PackedWriter writer(kListVersion);
  writer.number(texts.size());
  for (const auto& text : texts) writer.text(text);
  return std::move(writer).withChecksum();
}

std::vector<std::string> unpackedList(std::string_view bytes) {
  std::vector<std::string> texts;
  if (bytes.empty()) return texts;
  PackedReader<DamagedBytes> reader(bytes, kListVersion, "an agreed list is damaged");
  const auto count = reader.count(1);
  texts.reserve(count);
  for (std::size_t i = 0; i < count; ++i) texts.push_back(reader.text());
  reader.end();
  return texts;
}

// How a member is noted: linked, or said by the card alone.
constexpr char kLinked = '+';
constexpr char kUnlinked = '-';

// Equal to no picture, since it is none.
const Data& otherPicture() {
  static const auto& other = *new Data(makeData("?"));
  return other;
}

bool isPicture(const Data& picture, std::uint64_t checksum) {
  return picture ? checksum64(*picture) == checksum : checksum == 0;
}

}  // namespace

SyncCard::Texts textsOf(const SyncCard& card) {
  if (card.id == 0) return {};
  const std::array ids{card.id};
  auto texts = syncSource().syncCardTexts(ids);
  return texts.empty() ? SyncCard::Texts() : std::move(texts.front());
}

// Of somebody who was forgotten nothing is left.
std::uint64_t agreedPicture(const SyncCard::Texts& texts) {
  std::uint64_t picture = 0;
  if (texts.agreed.empty()) return picture;
  if (texts.agreed.size() < sizeof picture) throw DamagedBytes("agreed values are damaged");
  std::memcpy(&picture, texts.agreed.data(), sizeof picture);
  return picture;
}

std::string packedMembers(const std::vector<std::string>& members,
                          const std::vector<std::string>& unlinked) {
  const std::unordered_set<std::string_view> out(unlinked.begin(), unlinked.end());
  std::vector<std::string> noted;
  noted.reserve(members.size());
  for (const auto& member : members)
    noted.push_back((out.contains(member) ? kUnlinked : kLinked) + member);
  return packedList(noted);
}

std::vector<std::string> unlinkedMembers(const SyncCard::Texts& texts) {
  std::vector<std::string> unlinked;
  for (auto& noted : unpackedList(texts.members)) {
    if (noted.starts_with(kUnlinked)) unlinked.push_back(noted.substr(1));
  }
  return unlinked;
}

SyncCard::Texts agreedTexts(std::string_view text, const CardContent& ours) {
  SyncCard::Texts texts;
  texts.text = packedCard(text, ours.photo);
  const std::uint64_t picture = ours.photo ? checksum64(*ours.photo) : 0;
  texts.agreed.assign(reinterpret_cast<const char*>(&picture), sizeof picture);
  texts.agreed += encodeProperties(ours.properties);
  texts.tags = packedList(ours.categories);
  texts.members = packedMembers(ours.members, {});
  return texts;
}

std::string packedSent(const SyncCard::Texts& texts) {
  return packedList({texts.text, texts.agreed, texts.tags, texts.members});
}

std::optional<SyncCard::Texts> sentTexts(const SyncCard::Texts& texts) {
  auto packed = unpackedList(texts.sent);
  if (packed.size() != 4) return std::nullopt;
  return SyncCard::Texts{std::move(packed[0]), std::move(packed[1]), std::move(packed[2]),
                         std::move(packed[3])};
}

CardContent agreedContent(const SyncCard& card, const SyncCard::Texts& texts, const Data& picture) {
  CardContent content;
  content.isGroup = card.kind == RecordKind::Group;
  if (texts.agreed.empty()) return content;
  const auto checksum = agreedPicture(texts);
  content.properties = decodeProperties(std::string_view(texts.agreed).substr(sizeof checksum));
  if (checksum != 0) content.photo = isPicture(picture, checksum) ? picture : otherPicture();
  content.categories = unpackedList(texts.tags);
  for (auto& noted : unpackedList(texts.members)) {
    if (!noted.empty()) content.members.push_back(noted.substr(1));
  }
  return content;
}

std::string agreedText(const SyncCard::Texts& texts, const Data& picture) {
  if (texts.text.empty()) return {};
  const bool isThere = !needsPicture(texts.text) || isPicture(picture, agreedPicture(texts));
  return isThere ? unpackedCard(texts.text, picture)
                 : unpackedWithOther(texts.text, otherPicture());
}

bool isAgreedContent(const SyncCard::Texts& texts, const CardContent& theirs) {
  const auto read = readCard(agreedText(texts, theirs.photo));
  const auto* before = std::get_if<ReadCard>(&read);
  return before != nullptr && sameContent(before->content, theirs);
}

bool isAgreedText(const SyncCard::Texts& texts, std::string_view text) {
  const auto read = readCard(text);
  const auto* card = std::get_if<ReadCard>(&read);
  return card != nullptr && agreedText(texts, card->content.photo) == withCrlf(text);
}

}  // namespace ox::sync
