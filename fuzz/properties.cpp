// The stored values of a record, a stored change of tags and a stored list of links, each given the
// checksum that makes it whole: they are refused, or the same when they were written and read
// again.
#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>

#include "fuzz/input.hpp"
#include "fuzz/require.hpp"
#include "ox/base/checksum.hpp"
#include "ox/records/clean_text.hpp"
#include "ox/records/entry_identity.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/records/link_list.hpp"
#include "ox/records/merge.hpp"
#include "ox/records/property_codec.hpp"
#include "ox/records/tag_change.hpp"

namespace {

using namespace ox;

std::string whole(std::string_view input) {
  std::string bytes(input);
  const auto checksum = checksum64(bytes);
  return bytes.append(reinterpret_cast<const char*>(&checksum), sizeof checksum);
}

void tryProperties(std::string_view bytes) {
  constexpr std::size_t kMostProperties = 64;
  auto properties = decodeProperties(bytes, kMostProperties);
  const auto written = encodeProperties(properties);
  auto again = decodeProperties(written);
  fuzz::require(encodeProperties(again) == written);
  fuzz::require(sameContent(properties, again));
  fuzz::require(contentFingerprint(again, nullptr) == contentFingerprint(properties, nullptr));
  cleanText(properties);
  fuzz::require(!cleanText(properties));
}

std::string bytesOf(PropertyId id, const PropertyValue& value) {
  PropertyBag bag;
  bag.set(id, value);
  return encodeProperties(bag);
}

bool holds(const MultiValue& values, const MultiEntry& entry) {
  return std::ranges::any_of(values.entries, [&](const MultiEntry& other) {
    return other.label == entry.label && other.value == entry.value;
  });
}

const MultiValue* listOf(const PropertyValue& value) {
  const auto* list = std::get_if<MultiValuePtr>(&value);
  return list != nullptr ? list->get() : nullptr;
}

// A list that takes identifiers over holds what it held.
void tryIdentifiers(const MultiValue& before, const MultiValue& now) {
  const auto named = withIdentifiersOf(before, now);
  fuzz::require(named.entries.size() == now.entries.size());
  for (const auto& entry : now.entries) fuzz::require(holds(named, entry));
}

// What one side alone has changed is as that side has it, and what mine has added stands.
void tryMerge(const PropertyBag& base, const PropertyBag& mine, const PropertyBag& theirs) {
  for (const auto& [id, value] : mine.entries()) {
    std::vector<MultiEntry> overtaken;
    const auto& was = base.value(id);
    fuzz::require(bytesOf(id, mergedValue(was, value, was, overtaken)) == bytesOf(id, value));
    fuzz::require(bytesOf(id, mergedValue(was, was, value, overtaken)) == bytesOf(id, value));
    fuzz::require(overtaken.empty());
    const auto merged = mergedValue(was, value, theirs.value(id), overtaken);
    if (listOf(value) == nullptr) continue;
    if (listOf(was) != nullptr) tryIdentifiers(*listOf(was), *listOf(value));
    if (listOf(merged) == nullptr) continue;
    for (const auto& entry : listOf(value)->entries) {
      const bool isNew = listOf(was) == nullptr || !holds(*listOf(was), entry);
      fuzz::require(!isNew || holds(*listOf(merged), entry));
    }
  }
}

void tryTagChange(std::string_view before, std::string_view after) {
  const auto change = decodeTagChange(before, after);
  const auto written = encodeTagChange(change);
  fuzz::require(decodeTagChange(written.before, written.after) == change);
  const auto& tags = change.before;
  const bool isSet = std::set<std::string_view>(tags.begin(), tags.end()).size() == tags.size();
  fuzz::require((mergedTags(tags, tags, tags) == tags) == isSet);
  mergedTags(change.before, change.after, change.person.empty() ? change.before : change.after);
}

void tryLinks(std::string_view bytes) {
  const auto links = decodeLinks(bytes);
  fuzz::require(decodeLinks(encodeLinks(links)) == links);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  try {
    switch (input.byte() % 5) {
      case 0:
        tryProperties(input.rest());
        break;
      case 1:
        tryProperties(whole(input.rest()));
        break;
      case 2: {
        const auto base = decodeProperties(whole(input.text()));
        const auto mine = decodeProperties(whole(input.text()));
        tryMerge(base, mine, decodeProperties(whole(input.rest())));
        break;
      }
      case 3: {
        const auto before = whole(input.text());
        tryTagChange(before, whole(input.rest()));
        break;
      }
      default:
        tryLinks(whole(input.rest()));
    }
  } catch (const DamagedBytes&) {
  }
  return 0;
}
