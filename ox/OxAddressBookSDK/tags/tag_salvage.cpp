#include "ox/OxAddressBookSDK/tags/tag_salvage.hpp"

#include <map>
#include <utility>

#include "ox/OxAddressBookSDK/tags/tag_file.hpp"
#include "ox/base/sqlite/page_file.hpp"
#include "ox/base/sqlite/page_rows.hpp"

namespace ox {
namespace {

using sqlite::PageRow;

bool isTag(const PageRow& row) {
  using Type = PageRow::Type;
  // Since version 3 each row bears its sum.
  if (row.size() == 5 ? !row.hasSumOf(4) : row.size() != 4) return false;
  return row.is(0, Type::Text) && row.is(1, Type::Text) && row.is(2, Type::Text) &&
         row.is(3, Type::Integer) && !row[2].bytes.empty();
}

}  // namespace

SalvagedTags salvageTags(const std::string& from, const std::string& to) {
  sqlite::PageFile pages(from);
  sqlite::PageRows rows(pages);
  // Of each manager and person, by their places.
  std::map<std::pair<std::string, std::string>, std::map<std::int64_t, std::string>> found;
  bool whole = true;
  for (std::uint32_t page = 1; page <= pages.count(); ++page) {
    const auto form = pages.isFree(page) ? std::nullopt : rows.formOf(page);
    if (form != sqlite::PageRows::Form::Index) continue;
    whole &= rows.listed(page, *form, [&](const auto&, const PageRow& row) {
      if (!isTag(row)) return;
      found[{std::string(row[0].bytes), std::string(row[1].bytes)}].emplace(row[3].integer,
                                                                            row[2].bytes);
    });
  }
  SalvagedTags result{0, pages.damages()};
  TagFile file(to);
  for (const auto& [whose, places] : found) {
    TagFile::Tags tags;
    for (const auto& [place, tag] : places) tags.push_back(tag);
    result.tags += tags.size();
    file.replace(whose.first, whose.second, tags);
  }
  file.sync();
  if (!whole) result.damages.emplace_back("some tags cannot be read");
  return result;
}

}  // namespace ox
