#include "ox/sync/cards/card_edit.hpp"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "ox/base/uuid.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/sync/cards/card_merge.hpp"
#include "ox/sync/cards/lines/edited_lines.hpp"
#include "ox/sync/cards/lines/fresh_card.hpp"
#include "ox/vcard/lines/ascii.hpp"

namespace ox::sync {
namespace {

// What the card is to say in its own version, and what it does.
class Edit {
 public:
  Edit(std::string_view text, const ReadCard& now, const CardContent& wanted,
       const EditOptions& options)
      : lines_(linesOf(text)), now_(now), wanted_(wanted), options_(options) {}

  // Missing when no edit of lines says it.
  std::optional<std::string> edited() const {
    const auto wantedText = writtenValues(wanted_, now_.version);
    const auto canonical = readCard(wantedText);
    const auto* asWritten = std::get_if<ReadCard>(&canonical);
    for (const auto scope : {EditScope::ChangedLines, EditScope::ChangedNames}) {
      EditedLines lines(lines_, now_, wanted_, scope);
      lines.setRevision(options_.revision);
      lines.setUid(uid());
      auto text = lines.text();
      const auto read = readCard(text);
      const auto* card = std::get_if<ReadCard>(&read);
      if (card == nullptr || card->version != now_.version) continue;
      if (sameContent(card->content, wanted_)) return text;
      if (asWritten == nullptr) continue;
      auto whole = asWritten->content;
      whole.members = wanted_.members;
      if (sameContent(card->content, whole)) return text;
    }
    return std::nullopt;
  }

  // That of the text.
  std::string uid() const {
    if (!now_.uid.empty()) return now_.uid;
    const auto* own = wanted_.properties.text(property_id::kCardUid);
    return own != nullptr ? *own : std::string();
  }

  // Of a version that we write, from its BEGIN to its END.
  bool isEditable() const {
    if (lines_.size() < 2 || lines_.front().name != "BEGIN" || lines_.back().name != "END") {
      return false;
    }
    const auto version = valueOf(lines_, "VERSION");
    return version == "3.0" || version == "4.0";
  }

 private:
  std::vector<TextLine> lines_;
  const ReadCard& now_;
  const CardContent& wanted_;
  const EditOptions& options_;
};

}  // namespace

std::string editedCard(std::string_view text, const CardContent& said, const CardContent& wanted,
                       const EditOptions& options) {
  const auto clean = withoutControls(withCrlf(text));
  const auto read = readCard(clean);
  const auto* now = std::get_if<ReadCard>(&read);
  const auto* uid = wanted.properties.text(property_id::kCardUid);
  if (now == nullptr) {
    return newCard(wanted, uid != nullptr ? *uid : std::string(), vcard::CardVersion::V30, options);
  }
  // What differs between the two is done to what the text says, so that its own way of saying the
  // rest is known.
  auto target = merge(&said, now->content, &said, wanted).forThem;
  target.isGroup = wanted.isGroup;
  if (now->uid.empty() && uid != nullptr)
    target.properties.set(property_id::kCardUid, Object(*uid));
  const Edit edit(clean, *now, target, options);
  if (edit.isEditable() && target.isGroup == now->content.isGroup) {
    if (auto edited = edit.edited()) return *edited;
  }
  return newCard(target, edit.uid(), now->version, options);
}

}  // namespace ox::sync
