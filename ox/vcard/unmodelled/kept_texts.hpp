#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ox/records/property_bag.hpp"
#include "ox/vcard/unmodelled/kept_lines.hpp"
#include "ox/vcard/write/writer.hpp"

namespace ox::vcard {

// What a record keeps beside its properties, sorted out for a writer. Borrows the bag.
class KeptTexts {
 public:
  explicit KeptTexts(const PropertyBag& properties);

  // The first FN line; empty without one.
  std::string_view fullNameLine() const { return fullNameLine_; }
  // Every other line, nested cards included, in order.
  const std::vector<std::string_view>& lines() const { return lines_; }
  // By property and entry.
  const std::vector<KeptDetail>& parameters() const { return parameters_; }
  // How a value was spelt; empty when that was not kept.
  std::string_view spellingOf(PropertyId property, std::uint64_t entry) const;
  // Those of one entry, or of a single value (entry 0).
  std::span<const KeptDetail> parametersOf(PropertyId property, std::uint64_t entry) const;
  // The rank that a PREF parameter gave; 0 when none was kept.
  unsigned rankOf(PropertyId property, std::uint64_t entry) const;
  // The group that the entry's line had; empty when that was not kept.
  std::string_view groupOf(PropertyId property, std::uint64_t entry) const;
  bool hasRanks() const { return !ranks_.empty(); }
  // ";SORT-AS=..." of N; empty without one.
  std::string_view sortAs() const { return sortAs_; }
  // The number after the highest "itemN" that a kept line has as its group.
  std::size_t firstFreeItem() const { return firstFreeItem_; }

 private:
  void takeDetail(const KeptDetail& detail);
  void takeGroup(std::string_view group);

  std::string_view fullNameLine_;
  std::vector<std::string_view> lines_;
  std::vector<KeptDetail> parameters_;
  std::vector<KeptDetail> spellings_;
  std::vector<KeptDetail> ranks_;
  std::vector<KeptDetail> groups_;
  std::string_view sortAs_;
  std::size_t firstFreeItem_ = 1;
};

// The group of a kept line; empty without one.
std::string_view groupOfLine(std::string_view line);
// The name of a kept line's property, without its group; empty when there is none.
std::string_view nameOfLine(std::string_view line);
// True when a kept line's name, parameters and base64 are well-formed in that version.
bool isWellFormed(std::string_view line, CardVersion version);
// True when the parameters, from their first semicolon on, are well-formed in that version.
bool areAdmitted(std::string_view parameters, CardVersion version);

}  // namespace ox::vcard
