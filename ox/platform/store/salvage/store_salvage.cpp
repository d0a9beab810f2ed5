#include "ox/platform/store/salvage/store_salvage.hpp"

#include <exception>
#include <filesystem>
#include <system_error>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "ox/base/replacement_file.hpp"
#include "ox/base/sqlite/page_file.hpp"
#include "ox/platform/store/committed/contact_store.hpp"
#include "ox/platform/store/salvage/found_rows.hpp"
#include "ox/platform/store/schema/schema.hpp"
#include "ox/platform/store/values/store_error.hpp"

namespace ox {
namespace {

constexpr std::int64_t kLocalRow = 1;
constexpr std::size_t kRecordsOfAnAct = 1'000;
constexpr std::size_t kPictureBytesOfAnAct = std::size_t{32} << 20U;
constexpr std::size_t kLinksOfAnAct = 10'000;

// Puts what was found into a new store, some of it at a time.
class Salvage {
 public:
  Salvage(FoundRows& found, ContactStore& store) : found_(found), store_(store) {}

  SalvageReport run() && {
    addContainers();
    for (const auto& entry : found_.records()) addRecord(entry);
    writeRecords();
    for (const auto& link : found_.links()) addLink(link);
    writeLinks();
    for (const auto& key : found_.lostRecords()) lose(key.text() + ": nothing of it can be read");
    if (found_.hasSync()) {
      lose(
          "what was kept of accounts in step with a server or folder: they are plain accounts now");
    }
    return std::move(report_);
  }

 private:
  struct Placed {
    RecordKey key;
    RecordKind kind = RecordKind::Person;
  };

  void lose(std::string what) { report_.losses.push_back(std::move(what)); }

  // Two accounts of one standard id, as earlier versions allowed them, become one.
  void addContainers() {
    const auto local = store_.committed().containers().inRow(kLocalRow)->identifier;
    containers_[kLocalRow] = local;
    for (auto& [row, container] : found_.containers()) {
      if (row == kLocalRow) continue;
      SaveRequest request;
      request.newContainers.push_back(container);
      containers_[row] = container.identifier;
      if (!store_.execute(request))
        lose("the account " + container.identifier + ": " + request.reason);
    }
  }

  // A record whose account is lost stands in the local one.
  std::string containerOf(const RecordEntry& entry) {
    const auto found = containers_.find(entry.container);
    if (found != containers_.end()) return found->second;
    if (entry.container != 0 && lostContainers_.insert(entry.container).second) {
      lose("an account cannot be read: its contacts are in the local account now");
    }
    return containers_.at(kLocalRow);
  }

  void addRecord(const RecordEntry& entry) {
    auto content = found_.content(entry.row);
    if (!content) return lose(entry.key.text() + ": its values cannot be read");
    NewRecord record{entry.key, entry.kind, containerOf(entry), std::move(content->properties), {}};
    if (entry.container == 0) {
      if (record.properties.find(property_id::kGroupName) != nullptr)
        record.kind = RecordKind::Group;
      const bool isNameless = record.key.isNone();
      if (isNameless) record.key = RecordKey::make(record.kind);
      lose(record.key.text() + (isNameless ? ": its identifier and account cannot be read; this is "
                                             "a new one, in the local account"
                                           : ": its account cannot be read; it is in the local one "
                                             "now"));
    }
    if (!keys_.insert(record.key).second) {
      return lose(record.key.text() + ": it was there twice; one of them is left out");
    }
    if (content->picture != 0) {
      if (auto picture = found_.picture(content->picture)) {
        pictureBytes_ += picture->size();
        record.image = makeData(std::move(*picture));
      } else {
        lose(record.key.text() + ": its picture cannot be read");
      }
    }
    rows_.push_back(entry.row);
    request_.additions.push_back(std::move(record));
    if (rows_.size() >= kRecordsOfAnAct || pictureBytes_ >= kPictureBytesOfAnAct) writeRecords();
  }

  void count(const NewRecord& record, std::int64_t row) {
    placed_[row] = {record.key, record.kind};
    if (record.image) ++report_.pictures;
    ++(record.kind == RecordKind::Group ? report_.records.groups : report_.records.persons);
  }

  // A request is written as a whole; what is refused for one record is tried without the others.
  void writeRecords() {
    if (request_.additions.empty()) return;
    if (store_.execute(request_)) {
      for (std::size_t i = 0; i < rows_.size(); ++i) count(request_.additions[i], rows_[i]);
    } else {
      for (std::size_t i = 0; i < rows_.size(); ++i) {
        SaveRequest single;
        single.additions.push_back(std::move(request_.additions[i]));
        if (store_.execute(single)) {
          count(single.additions.front(), rows_[i]);
        } else {
          lose(single.additions.front().key.text() + ": " + single.reason);
        }
      }
    }
    request_ = {};
    rows_.clear();
    pictureBytes_ = 0;
  }

  void addLink(const FoundRows::Link& link) {
    const auto group = placed_.find(link.group);
    const auto child = placed_.find(link.child);
    if (group == placed_.end() || child == placed_.end()) return;  // told of the record already
    request_.links.push_back({group->second.key, child->second.key});
    if (request_.links.size() >= kLinksOfAnAct) writeLinks();
  }

  void writeLinks() {
    if (request_.links.empty()) return;
    if (store_.execute(request_)) {
      report_.links += request_.links.size();
    } else {
      for (const auto& link : request_.links) {
        SaveRequest single;
        single.links.push_back(link);
        if (store_.execute(single)) {
          ++report_.links;
        } else {
          lose(single.reason);
        }
      }
    }
    request_ = {};
  }

  FoundRows& found_;
  ContactStore& store_;
  SalvageReport report_;
  SaveRequest request_;
  std::vector<std::int64_t> rows_;  // of the additions of the request
  std::size_t pictureBytes_ = 0;    // of them
  std::unordered_map<std::int64_t, std::string> containers_;
  std::unordered_set<std::int64_t> lostContainers_;
  std::unordered_map<std::int64_t, Placed> placed_;
  std::unordered_set<RecordKey> keys_;
};

}  // namespace

void refuseExisting(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::exists(std::filesystem::symlink_status(path, error))) return;
  throw StoreError(StoreError::Kind::Unavailable, path + ": is there already", path);
}

StoreSalvage::StoreSalvage(std::string from, const std::string& to) : from_(std::move(from)) {
  refuseExisting(to);
  file_ = std::make_unique<ReplacementFile>(to);
}

// What lies beside the store goes with its log when it is closed, where that can be done.
StoreSalvage::~StoreSalvage() {
  try {
    for (const auto& file : files()) {
      if (file != file_->path()) std::filesystem::remove(file);
    }
  } catch (const std::exception&) {
    // What is left goes when the same target is written again.
  }
}

std::vector<std::string> StoreSalvage::files() const {
  std::vector<std::string> files;
  for (const auto* ending : {"", "-wal", "-shm", "-synced"}) {
    files.push_back(file_->path() + ending);
  }
  return files;
}

SalvageReport StoreSalvage::take() {
  sqlite::PageFile pages(from_);
  FoundRows found(pages);
  ContactStore store{StoreAddress(file_->path())};
  auto report = Salvage(found, store).run();
  store.checkpoint();
  report.damages = pages.damages();
  if (const auto doubtful = found.doubtful(); doubtful > 0) {
    report.damages.push_back(std::to_string(doubtful) +
                             (doubtful == 1 ? " row stands" : " rows stand") +
                             " on a damaged page and may be of an older state");
  }
  return report;
}

void StoreSalvage::put() {
  file_->commit();
}

}  // namespace ox
