#include "ox/sync/cards/lines/member_lines.hpp"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "ox/records/card_uid.hpp"
#include "ox/sync/cards/card_content.hpp"
#include "ox/sync/cards/parts/text_sets.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/line_writer.hpp"
#include "ox/vcard/lines/uri.hpp"
#include "ox/vcard/write/writer.hpp"

namespace ox::sync {
namespace {

bool isMemberLine(const TextLine& line) {
  return line.name == "MEMBER" || line.name == "X-ADDRESSBOOKSERVER-MEMBER";
}

std::string_view valueIn(const TextLine& line) {
  const std::string_view text = line.unfolded;
  const auto colon = text.find(':');
  return colon == std::string_view::npos ? text : vcard::trimmed(text.substr(colon + 1));
}

// The member that the line names, as the reader takes it; empty for none.
std::string memberOf(const TextLine& line, vcard::CardVersion version) {
  std::string card = "BEGIN:VCARD\r\n";
  card += version == vcard::CardVersion::V40 ? "VERSION:4.0\r\n" : "VERSION:3.0\r\n";
  card.append("KIND:group\r\n").append(line.bytes).append("END:VCARD\r\n");
  const auto read = readCard(card);
  const auto* whole = std::get_if<ReadCard>(&read);
  if (whole == nullptr || whole->content.members.empty()) return {};
  return whole->content.members.front();
}

// The line of one member as our exports write it.
std::string exportedLine(const std::string& member, vcard::CardVersion version) {
  std::string card;
  vcard::WriteOptions options;
  options.version = version;
  vcard::appendGroup({}, {member}, options, card);
  for (auto& line : linesOf(card)) {
    if (isMemberLine(line)) return std::move(line.bytes);
  }
  return {};
}

// The same named and spelled as that line of the text.
std::string lineLike(const TextLine& example, const std::string& member,
                     vcard::CardVersion version) {
  const auto exported = exportedLine(member, version);
  const bool hasPrefix = vcard::startsWithWord(valueIn(example), "URN:UUID:");
  const auto head = example.unfolded.substr(0, example.unfolded.find_first_of(":;"));
  const auto lines = linesOf("BEGIN:VCARD\r\n" + exported + "END:VCARD\r\n");
  auto value = lines.size() > 1 ? std::string(valueIn(lines[1])) : member;
  // Bare is a spelling of UIDs that "urn:uuid:" would be put before.
  if (!hasPrefix && value == std::string(kUrnPrefix) + member) value = member;
  std::string line;
  vcard::LineWriter(line).raw(head).raw(":").raw(value).end();
  return line;
}

}  // namespace

MemberEdit memberEdit(const std::vector<TextLine>& lines, const std::vector<std::string>& said,
                      const std::vector<std::string>& wanted, vcard::CardVersion version) {
  MemberEdit edit;
  edit.isGone.resize(lines.size());
  edit.place = lines.empty() ? 0 : lines.size() - 1;
  std::unordered_set<std::string> gone;
  for (const auto& member : textsWithout(said, wanted, Case::CountsNot)) {
    gone.insert(textKey(member, Case::CountsNot));
  }
  const TextLine* example = nullptr;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (!isMemberLine(lines[i])) continue;
    edit.place = i + 1;
    const auto value = valueIn(lines[i]);
    const bool isUid = vcard::startsWithWord(value, "URN:UUID:") || vcard::schemeOf(value).empty();
    if (isUid) example = &lines[i];
    if (gone.empty()) continue;
    edit.isGone[i] = gone.contains(textKey(memberOf(lines[i], version), Case::CountsNot));
  }
  for (const auto& member : textsWithout(wanted, said, Case::CountsNot)) {
    edit.added.push_back(example != nullptr ? lineLike(*example, member, version)
                                            : exportedLine(member, version));
  }
  return edit;
}

}  // namespace ox::sync
