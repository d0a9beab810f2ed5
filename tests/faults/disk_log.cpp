#include "tests/faults/disk_log.hpp"

#include <algorithm>
#include <fstream>

namespace ox::faults {
namespace {

constexpr std::size_t kSector = 512;

// The part of a write that lies in the sector of its first byte.
std::size_t firstSector(std::size_t place, std::size_t size) {
  return std::min(kSector - place % kSector, size);
}

void put(std::string& content, std::size_t place, std::string_view bytes) {
  if (content.size() < place + bytes.size()) content.resize(place + bytes.size(), '\0');
  content.replace(place, bytes.size(), bytes);
}

void apply(const Event& event, std::string& content) {
  const auto place = static_cast<std::size_t>(event.place);
  if (event.kind == Event::Kind::Truncate) {
    content.resize(place, '\0');
  } else {
    put(content, place, event.bytes);
  }
}

// Those sectors of a write that the choice takes.
template <typename Choice>
void applyTorn(const Event& event, std::string& content, Choice takes) {
  if (event.kind == Event::Kind::Truncate) {
    if (takes()) apply(event, content);
    return;
  }
  auto place = static_cast<std::size_t>(event.place);
  std::string_view bytes = event.bytes;
  while (!bytes.empty()) {
    const auto size = firstSector(place, bytes.size());
    if (takes()) put(content, place, bytes.substr(0, size));
    bytes.remove_prefix(size);
    place += size;
  }
}

}  // namespace

void DiskReplay::advanceTo(std::size_t events) {
  for (; played_ < events; ++played_) play(log_[played_]);
}

void DiskReplay::play(const Event& event) {
  using Kind = Event::Kind;
  if (event.kind == Kind::Found || event.kind == Kind::Create) {
    auto file = std::make_shared<File>(File{event.bytes, {}});
    now_[event.name] = file;
    namesSince_.emplace_back(event.name, std::move(file));
    if (event.kind == Kind::Found) settleNames();
    return;
  }
  if (event.kind == Kind::Delete || event.kind == Kind::DeleteSynced) {
    now_.erase(event.name);
    namesSince_.emplace_back(event.name, nullptr);
    if (event.kind == Kind::DeleteSynced) settleNames();
    return;
  }
  if (event.kind == Kind::SyncFolder) return settleNamesIn(event.name);
  const auto known = now_.find(event.name);
  if (known == now_.end()) return;  // no database's file
  if (event.kind == Kind::Rename) {
    const auto moved = known->second;
    now_.erase(known);
    now_[event.bytes] = moved;
    namesSince_.emplace_back(event.bytes, moved);
    namesSince_.emplace_back(event.name, nullptr);
    return;
  }
  auto& file = *known->second;
  if (event.kind != Kind::Sync && event.kind != Kind::SyncBytes) {
    file.since.push_back(&event);
    return;
  }
  syncBytes(file);
  if (event.kind == Kind::SyncBytes) return;
  const bool isNew = std::any_of(namesSince_.begin(), namesSince_.end(),
                                 [&](const auto& change) { return change.second.get() == &file; });
  if (isNew) settleNames();
}

void DiskReplay::syncBytes(File& file) {
  for (const auto* change : file.since) apply(*change, file.synced);
  file.since.clear();
}

void DiskReplay::settleNamesIn(const std::string& folder) {
  std::vector<std::pair<std::string, FilePtr>> others;
  for (auto& [name, file] : namesSince_) {
    if (std::filesystem::path(name).parent_path() == folder) {
      synced_[name] = std::move(file);
    } else {
      others.emplace_back(name, std::move(file));
    }
  }
  namesSince_ = std::move(others);
}

void DiskReplay::settleNames() {
  for (auto& [name, file] : namesSince_) synced_[name] = std::move(file);
  namesSince_.clear();
}

std::string DiskReplay::contentOf(const File& file, Loss loss, std::mt19937& chance) {
  auto content = file.synced;
  const auto coin = [&] { return chance() % 2 == 0; };
  auto whole = file.since.size();
  if (loss == Loss::All || loss == Loss::Chance) whole = 0;
  if (loss == Loss::Tail) whole = chance() % (file.since.size() + 1);
  for (std::size_t i = 0; i < file.since.size(); ++i) {
    if (i < whole) {
      apply(*file.since[i], content);
    } else if (loss == Loss::Tail) {
      applyTorn(*file.since[i], content, coin);
      break;
    } else if (loss == Loss::Chance && coin()) {
      // Every second of those that arrive is torn.
      const bool torn = coin();
      applyTorn(*file.since[i], content, [&] { return !torn || coin(); });
    }
  }
  return content;
}

void DiskReplay::writeInto(const std::filesystem::path& folder, Loss loss,
                           std::uint32_t seed) const {
  std::mt19937 chance(seed);
  auto names = synced_;
  auto arrived = loss == Loss::All ? 0 : namesSince_.size();
  if (loss == Loss::Tail || loss == Loss::Chance) arrived = chance() % (namesSince_.size() + 1);
  for (std::size_t i = 0; i < arrived; ++i) names[namesSince_[i].first] = namesSince_[i].second;
  for (const auto& [name, file] : names) {
    if (!file) continue;
    std::filesystem::create_directories((folder / name).parent_path());
    std::ofstream(folder / name, std::ios::binary) << contentOf(*file, loss, chance);
  }
}

}  // namespace ox::faults
