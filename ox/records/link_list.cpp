#include "ox/records/link_list.hpp"

#include "ox/records/packed_bytes.hpp"

namespace ox {
namespace {

constexpr char kVersion = 1;
constexpr std::size_t kFewestBytesOfLink = 2;

// What one number is behind another, whatever they are: damaged rows may hold any.
std::int64_t distance(std::int64_t from, std::int64_t to) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(to) -
                                   static_cast<std::uint64_t>(from));
}

std::int64_t advanced(std::int64_t from, std::int64_t by) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(from) +
                                   static_cast<std::uint64_t>(by));
}

}  // namespace

std::string encodeLinks(const NumberedLinks& links) {
  PackedWriter writer(kVersion);
  writer.number(links.size());
  NumberedLink before;
  for (const auto& link : links) {
    writer.signedNumber(distance(before.child, link.child));
    writer.signedNumber(distance(before.number, link.number));
    before = link;
  }
  return std::move(writer).withChecksum();
}

NumberedLinks decodeLinks(std::string_view bytes) {
  PackedReader<DamagedLinks> reader(bytes, kVersion, "stored links are damaged");
  NumberedLinks links(reader.count(kFewestBytesOfLink));
  NumberedLink before;
  for (auto& link : links) {
    link.child = advanced(before.child, reader.signedNumber());
    link.number = advanced(before.number, reader.signedNumber());
    before = link;
  }
  reader.end();
  return links;
}

}  // namespace ox
