#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "ox/records/property_bag.hpp"
#include "ox/vcard/unmodelled/property_detail.hpp"

namespace ox::vcard {

// What a record holds beside its properties, decoded and sorted out for a writer. Borrows the bag.
class Unmodelled {
 public:
  explicit Unmodelled(const PropertyBag& properties);

  // The FN line that counts: the first, where a reader puts it. Empty without one.
  std::string_view formattedNameLine() const { return formattedNameLine_; }
  // Every line, that one and nested cards included, in order.
  const std::vector<std::string_view>& lines() const { return lines_; }
  // By property and entry.
  const std::vector<DetailView>& parameters() const { return parameters_; }
  // The value as a card wrote it; empty when that was not preserved. Beside what a line of 3.0 says
  // there may be what only 4.0 could, which is longer.
  std::string_view verbatimOf(PropertyId property, std::uint64_t entry) const;
  // Those of one entry, or of a single value (entry 0).
  std::span<const DetailView> parametersOf(PropertyId property, std::uint64_t entry) const;
  // The rank that a PREF parameter gave; 0 when none was preserved.
  unsigned rankOf(PropertyId property, std::uint64_t entry) const;
  // The group that the entry's line had; empty when that was not preserved.
  std::string_view groupOf(PropertyId property, std::uint64_t entry) const;
  // The lines of other names that gave the value.
  std::span<const DetailView> originalLinesOf(PropertyId property, std::uint64_t entry) const;
  bool hasRanks() const { return !ranks_.empty(); }
  // ";SORT-AS=..." of N; empty without one.
  std::string_view sortAs() const { return sortAs_; }
  // The number after the highest "itemN" that an unmodelled line has as its group.
  std::size_t firstFreeItem() const { return firstFreeItem_; }

 private:
  void takeDetail(const DetailView& detail);
  void takeGroup(std::string_view group);

  std::string_view formattedNameLine_;
  std::vector<std::string_view> lines_;
  std::vector<DetailView> parameters_;
  std::vector<DetailView> verbatim_;
  std::vector<DetailView> ranks_;
  std::vector<DetailView> groups_;
  std::vector<DetailView> originals_;
  std::string_view sortAs_;
  std::size_t firstFreeItem_ = 1;
};

}  // namespace ox::vcard
