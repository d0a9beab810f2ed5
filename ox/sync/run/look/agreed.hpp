#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ox/platform/store/values/sync_rows.hpp"
#include "ox/sync/cards/card_content.hpp"

// What the store keeps of the time when both sides of a card last agreed: the text there, and what
// the record held.

namespace ox::sync {

// Those of that row; empty where it is none yet.
SyncCard::Texts textsOf(const SyncCard& card);

// The texts of a card's row, of what both sides say. Members of a group are noted as linked.
SyncCard::Texts agreedTexts(std::string_view text, const CardContent& ours);

// As one text, to be kept beside those that are agreed until the answer to what was sent has come
// (SyncCard::Texts::sent), and back; missing when nothing is kept. Throws DamagedBytes.
std::string packedSent(const SyncCard::Texts& texts);
std::optional<SyncCard::Texts> sentTexts(const SyncCard::Texts& texts);

// What the record held. Its picture is `picture` where that is still the one, and else some other
// bytes, which equal no picture. Throws DamagedBytes.
CardContent agreedContent(const SyncCard& card, const SyncCard::Texts& texts, const Data& picture);

// Of the picture that the record held; 0 without one. Throws DamagedBytes.
std::uint64_t agreedPicture(const SyncCard::Texts& texts);

// Members that are agreed, of which the store does not hold the unlinked ones in the group: it has
// no such record, or the group would come to lie in itself.
std::string packedMembers(const std::vector<std::string>& members,
                          const std::vector<std::string>& unlinked);
std::vector<std::string> unlinkedMembers(const SyncCard::Texts& texts);

// The text there, as last read: to the byte where the picture is still the one, and else with
// another picture in its place. Throws DamagedBytes.
std::string agreedText(const SyncCard::Texts& texts, const Data& picture);

// Whether a card says what it said then. Throws DamagedBytes.
bool isAgreedContent(const SyncCard::Texts& texts, const CardContent& theirs);

// Whether the text there is the one that was last read, to the byte. Throws DamagedBytes.
bool isAgreedText(const SyncCard::Texts& texts, std::string_view text);

}  // namespace ox::sync
