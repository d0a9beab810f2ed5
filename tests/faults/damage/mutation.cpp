#include "tests/faults/damage/mutation.hpp"

#include <algorithm>
#include <cstdlib>

namespace ox::faults {
namespace {

using Kind = Damage::Kind;

constexpr std::size_t kSector = 512;

class Damaging {
 public:
  Damaging(std::string& bytes, Pages pages, std::mt19937_64& chance)
      : bytes_(bytes), pages_(pages), chance_(chance) {}

  std::string make(Kind kind) {
    switch (kind) {
      case Kind::FlippedBit:
        return flipBit();
      case Kind::ZeroedSector:
        return overwrite("zeroed sector", sector(), kSector, false);
      case Kind::NoisySector:
        return overwrite("noisy sector", sector(), kSector, true);
      case Kind::ZeroedPage:
        return overwrite("zeroed page", page(), pages_.bytes, false);
      case Kind::NoisyPage:
        return overwrite("noisy page", page(), pages_.bytes, true);
      case Kind::Truncated:
        return cutOff();
      case Kind::SwappedPages:
        return swap();
      case Kind::DuplicatedPage:
        return copyPage();
      case Kind::FirstPageGone:
        return overwrite("first page gone", 0, pages_.start + pages_.bytes, chance_() % 2 == 0);
    }
    return {};
  }

 private:
  std::string flipBit() {
    auto place = chance_() % bytes_.size();
    // Much of a page is room that nothing uses: there one in four is enough.
    while (bytes_[place] == 0 && chance_() % 4 != 0) place = chance_() % bytes_.size();
    const auto bit = chance_() % 8;
    bytes_[place] = static_cast<char>(bytes_[place] ^ (1 << bit));
    return "flipped bit " + std::to_string(bit) + " of byte " + std::to_string(place);
  }

  std::size_t sector() { return chance_() % (bytes_.size() / kSector + 1) * kSector; }

  std::size_t page() {
    return pages_.start +
           chance_() % ((bytes_.size() - pages_.start) / pages_.bytes) * pages_.bytes;
  }

  std::string overwrite(const std::string& how, std::size_t place, std::size_t size, bool noise) {
    const auto end = std::min(bytes_.size(), place + size);
    for (auto i = place; i < end; ++i) bytes_[i] = noise ? static_cast<char>(chance_()) : '\0';
    return how + " at " + std::to_string(place);
  }

  // A file that is empty afterwards is a new one.
  std::string cutOff() {
    const auto size = 1 + chance_() % (bytes_.size() - 1);
    bytes_.resize(chance_() % 2 == 0 ? size : std::max(kSector, size / kSector * kSector));
    return "truncated to " + std::to_string(bytes_.size());
  }

  std::string swap() {
    const auto one = page();
    const auto other = page();
    const auto kept = bytes_.substr(one, pages_.bytes);
    bytes_.replace(one, pages_.bytes, bytes_.substr(other, pages_.bytes));
    bytes_.replace(other, pages_.bytes, kept);
    return "swapped pages at " + std::to_string(one) + " and " + std::to_string(other);
  }

  std::string copyPage() {
    const auto from = page();
    const auto to = page();
    bytes_.replace(to, pages_.bytes, bytes_.substr(from, pages_.bytes));
    return "page at " + std::to_string(from) + " is at " + std::to_string(to) + " too";
  }

  std::string& bytes_;
  Pages pages_;
  std::mt19937_64& chance_;
};

}  // namespace

Damage damage(std::string& bytes, Kind kind, Pages pages, std::mt19937_64& chance) {
  const auto whole = bytes;
  std::string text;
  while (bytes == whole) text = Damaging(bytes, pages, chance).make(kind);
  return {kind, text};
}

int damagesOr(int usual) {
  const auto* wanted = std::getenv("OX_DAMAGES");
  return wanted == nullptr ? usual : std::max(1, std::atoi(wanted));
}

}  // namespace ox::faults
