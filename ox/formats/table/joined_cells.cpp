#include "ox/formats/table/joined_cells.hpp"

#include <algorithm>

#include "ox/vcard/lines/ascii.hpp"

namespace ox::formats {
namespace {

std::vector<std::string_view> parted(std::string_view cell, std::string_view mark) {
  std::vector<std::string_view> parts;
  for (auto at = cell.find(mark); at != std::string_view::npos; at = cell.find(mark)) {
    parts.push_back(cell.substr(0, at));
    cell.remove_prefix(at + mark.size());
  }
  parts.push_back(cell);
  return parts;
}

}  // namespace

std::vector<FieldEntry> partedEntries(const FieldEntry& entry) {
  std::vector<FieldEntry> entries(1, entry);
  for (std::size_t part = 0; part < kParts; ++part) {
    const auto values = parted(entry.parts[part], kJoin);
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (i == entries.size()) {
        entries.push_back({entry.kind, entry.label, false, {}});
      }
      entries[i].parts[part] = values[i];
    }
  }
  return entries;
}

std::vector<std::string> partedTags(std::string_view cell) {
  const bool isJoined = cell.find(kJoin) != std::string_view::npos;
  std::vector<std::string> tags;
  for (const auto part : parted(cell, isJoined ? kJoin : std::string_view(";"))) {
    const auto tag = vcard::trimmed(part);
    if (!tag.empty()) tags.emplace_back(tag);
  }
  return tags;
}

std::string joinedTags(const std::vector<std::string>& tags) {
  std::string cell;
  for (const auto& tag : tags) {
    if (!cell.empty()) cell += kJoin;
    cell += tag;
  }
  // One tag with a semicolon in it would be read as two.
  if (tags.size() == 1 && cell.find(';') != std::string::npos) cell += kJoin;
  return cell;
}

}  // namespace ox::formats
