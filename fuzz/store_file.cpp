// Contact stores: made of the bytes of an input, a sound one with some bytes of it or of its log
// changed, or one with rows that the input tells, with sums that fit. Refused, or read from end to
// end without anything but a failure that is told; what `check` calls sound can be read.
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <span>

#include "fuzz/input.hpp"
#include "fuzz/require.hpp"
#include "fuzz/scratch_file.hpp"
#include "ox/base/checksum.hpp"
#include "ox/base/failures.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "ox/base/sqlite/log_pages.hpp"
#include "ox/platform/store/journal/store_journal.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "ox/records/damaged_bytes.hpp"
#include "ox/records/property_codec.hpp"
#include "ox/records/tag_change.hpp"
#include "ox/vcard/write/writer.hpp"

namespace {

using namespace ox;

std::string bytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// A store with something of everything in it, whose last acts stand in the log.
struct Sound {
  std::string bytes;
  std::string log;

  Sound() {
    const auto path = fuzz::scratchPath("made.db");
    fuzz::writeDatabase(path, {});
    std::filesystem::remove(path);
    const auto source = openStoreSource(path);
    addRecords(*source);
    edit(*source);
    source->checkpoint();
    const auto person = RecordKey::of("ann");
    source->setValue(person, RecordKind::Person, property_id::kNote, Object("in the log"));
    source->save();
    bytes = bytesOf(path);
    log = bytesOf(path + "-wal");
  }

  static const Sound& shared() {
    static const Sound sound;
    return sound;
  }

 private:
  static void addRecords(ContactSource& source) {
    SaveRequest request;
    request.newContainers.push_back({"A:ABAccount", "Cloud", 3});
    const auto add = [&](const char* id, RecordKind kind, PropertyId name, const char* container) {
      NewRecord record{RecordKey::of(id), kind, container, {}, {}};
      record.properties.set(name, Object(id));
      if (*id == 'a') record.properties.set(property_id::kCardUid, Object("card"));
      if (*id == 'a') record.image = makeData("a picture");
      request.additions.push_back(std::move(record));
    };
    constexpr auto kLocal = "_local:ABAccount";
    add("ann", RecordKind::Person, property_id::kFirst, kLocal);
    add("ben", RecordKind::Person, property_id::kFirst, kLocal);
    add("cid", RecordKind::Person, property_id::kFirst, "A:ABAccount");
    add("friends", RecordKind::Group, property_id::kGroupName, kLocal);
    add("chess", RecordKind::Group, property_id::kGroupName, kLocal);
    const auto friends = RecordKey::of("friends");
    for (const auto* id : {"ann", "ben", "chess"}) {
      request.links.push_back({friends, RecordKey::of(id)});
    }
    fuzz::require(source.execute(request));
  }

  static void edit(ContactSource& source) {
    const auto ann = RecordKey::of("ann");
    source.setValue(ann, RecordKind::Person, property_id::kFirst, Object("Anna"));
    source.setImageData(ann, makeData("another picture"));
    fuzz::require(source.save({{"_local", "ann", {}, {"red"}}}).done);
    source.remove(RecordKey::of("ben"), RecordKind::Person);
    fuzz::require(source.save().done);
    source.setValue(ann, RecordKind::Person, property_id::kNote, Object("taken back"));
    fuzz::require(source.save().done);
    fuzz::require(source.journal().takeBack(std::nullopt, StoreJournal::Last::Command).done);
    source.journal().setBounds({36500, 1 << 20});
  }
};

std::string whole(std::string_view input) {
  std::string bytes(input);
  const auto checksum = checksum64(bytes);
  return bytes.append(reinterpret_cast<const char*>(&checksum), sizeof checksum);
}

struct Table {
  const char* name;
  const char* columns;
  int count;
};

constexpr std::array kTables = {
    Table{"container", "id, identifier, name, type", 4},
    Table{"record", "id, uid, kind, container", 4},
    Table{"custom_property", "name, type", 2},
    Table{"link", "id, parent, child", 3},
    Table{"content", "record, card_uid, fingerprint, image, properties", 5},
    Table{"image", "id, checksum, data", 3},
    Table{"store", "name", 1},
    Table{"origin", "id, program, command, together, undoes, first_act", 6},
    Table{"act", "number, name, at, origin, next_record, next_link, next_change, bytes", 8},
    Table{"change", "id, what, record, container, other, place, before, after", 8},
    Table{"tag_debt", "number", 1},
    Table{"setting", "name, value", 2},
};

std::string keyOf(const Table& table) {
  const std::string columns = table.columns;
  return columns.substr(0, columns.find(','));
}

std::string columnOf(const Table& table, int column) {
  const std::string columns = table.columns;
  std::size_t start = 0;
  for (; column > 0; --column) start = columns.find(", ", start) + 2;
  return columns.substr(start, columns.find(',', start) - start);
}

// One store for all runs, which is as the sound one when a run begins. A source follows what is
// changed under it, so nothing has to be opened anew.
class Rows {
 public:
  explicit Rows(const Sound& sound) : path_(fuzz::scratchPath("rows.db")) {
    const auto soundPath = fuzz::scratchPath("sound.db");
    fuzz::writeDatabase(soundPath, sound.bytes, sound.log);
    fuzz::writeDatabase(path_, sound.bytes, sound.log);
    database_ = sqlite::Connection(path_, sqlite::Connection::Mode::ReadWrite);
    database_.execute(("ATTACH '" + soundPath + "' AS sound").c_str());
    database_.execute("PRAGMA synchronous=OFF; PRAGMA wal_autocheckpoint=64");
    for (const auto& table : kTables) {
      const std::string name = table.name;
      const std::string columns = table.columns;
      restore_.emplace_back(database_.prepare("DELETE FROM main." + name),
                            database_.prepare("INSERT INTO main." + name + "(" + columns +
                                              ") SELECT " + columns + " FROM sound." + name));
    }
    source_ = openStoreSource(path_);
  }

  const std::string& path() const { return path_; }
  ContactSource& source() { return *source_; }

  void change(fuzz::Input& input) {
    sqlite::Transaction transaction(database_);
    for (const auto which : changed_) {
      restore_[which].first.run();
      restore_[which].second.run();
    }
    changed_.clear();
    while (!input.isEmpty()) changeOne(input);
    transaction.commit();
  }

 private:
  // Puts a row, takes one away, or changes one column of some. What the tables refuse is left out.
  void changeOne(fuzz::Input& input) {
    const auto which = input.byte() % kTables.size();
    changed_.insert(which);
    const auto& table = kTables[which];
    const std::string name = table.name;
    const auto what = input.byte() % (table.count + 2);
    auto& statement = changes_[{which, what}];
    if (!statement) {
      std::string marks = "?";
      for (int i = 1; i < table.count; ++i) marks += ", ?";
      statement = database_.prepare(
          what == 0
              ? "INSERT OR REPLACE INTO " + name + "(" + table.columns + ") VALUES(" + marks + ")"
          : what == 1 ? "DELETE FROM " + name + " WHERE " + keyOf(table) + " = ?"
                      : "UPDATE OR REPLACE " + name + " SET " + columnOf(table, what - 2) +
                            " = ?1 WHERE " + keyOf(table) + " >= ?2");
    }
    const sqlite::StatementScope scope(statement);
    std::array<std::string, 8> room;
    const int columns = what == 0 ? table.count : what == 1 ? 1 : 2;
    for (int i = 1; i <= columns; ++i) {
      bind(statement, i, input, room[static_cast<std::size_t>(i) - 1]);
    }
    try {
      statement.step();
    } catch (const FailureError&) {
    }
  }

  static void bind(sqlite::Statement& statement, int column, fuzz::Input& input,
                   std::string& room) {
    switch (input.byte() % 8) {
      case 0:
        statement.bindNull(column);
        return;
      case 1:
        room = input.text();
        statement.bindText(column, room);
        return;
      case 2:
        room = input.text();
        statement.bindBlob(column, room);
        return;
      case 3:
        room = whole(input.text());
        statement.bindBlob(column, room);
        return;
      case 4:
        statement.bind(column, input.number());
        return;
      default:
        statement.bind(column, input.byte() % 16);
    }
  }

  std::string path_;
  sqlite::Connection database_;
  std::vector<std::pair<sqlite::Statement, sqlite::Statement>> restore_;  // by table
  std::set<std::size_t> changed_;  // the tables; no change of one reaches another
  std::map<std::pair<std::size_t, int>, sqlite::Statement> changes_;
  std::shared_ptr<ContactSource> source_;
};

// As an export asks for them.
void readRecords(ContactSource& source) {
  std::string card;
  const auto write = [&](const RecordKeys& keys, const auto& append) {
    constexpr std::size_t kBytes = 4096;
    for (std::span rest(keys); !rest.empty();) {
      const auto contents = source.committedContents(rest, kBytes);
      fuzz::require(!contents.empty() && contents.size() <= rest.size());
      for (const auto& content : contents) {
        card.clear();
        if (content.values) append(content);
      }
      rest = rest.subspan(contents.size());
    }
  };
  const vcard::WriteOptions options{.version = vcard::CardVersion::V40, .uid = "uid"};
  for (const auto& container : source.containers()) {
    const auto& id = container->identifier;
    write(source.recordsIn(id, RecordKind::Person), [&](const RecordContent& content) {
      vcard::appendCard(*content.values, content.picture, options, card);
    });
    const auto groups = source.recordsIn(id, RecordKind::Group);
    write(groups, [&](const RecordContent& content) {
      vcard::appendGroup(*content.values, {}, options, card);
    });
    source.committedChildren(groups, RecordKind::Person);
    source.committedChildren(groups, RecordKind::Group);
    for (const auto& group : groups) source.parents(group);
  }
}

void readJournal(ContactSource& source) {
  auto& journal = source.journal();
  journal.commands(100);
  journal.bounds();
  source.tagDebts();
  for (const auto& removed : journal.removedRecords(100)) {
    journal.historyOf(removed.record.key, 100);
  }
  journal.historyOf(RecordKey::of("ann"), 100);
  journal.recordAt(RecordKey::of("ann"), 0);
  journal.read({}, 100);
}

bool isSound(const std::string& path) {
  // The check would look again and again whether somebody is just writing it.
  const sqlite::LogPages log(path + "-wal");
  if (log.isHeadDamaged() || log.damagedPages() > 0) return false;
  return storeProblems(path).empty();
}

// Whether it could be read.
template <typename Read>
bool tryReading(Read read) {
  try {
    read();
    return true;
  } catch (const FailureError&) {
    return false;
  } catch (const DamagedBytes&) {
    return false;
  }
}

enum class What : std::uint8_t { All, Journal, Records };

// Each that takes longer is done less often.
What whatToRead(std::uint8_t byte) {
  if (byte % 32 == 31) return What::All;
  return byte % 8 == 6 ? What::Journal : What::Records;
}

// The source over the store at that path, which is opened now when it is missing.
void tryStore(const std::string& path, ContactSource* open, What what) {
  bool sound = false;
  try {
    sound = what == What::All && isSound(path);
  } catch (const FailureError&) {
  }
  const auto made = open == nullptr ? openStoreSource(path) : nullptr;
  auto& source = open == nullptr ? *made : *open;
  const bool areRecordsRead = what == What::Journal || tryReading([&] { readRecords(source); });
  const bool isJournalRead = what == What::Records || tryReading([&] { readJournal(source); });
  fuzz::require(!sound || (areRecordsRead && isJournalRead));
}

void tryBytes(int form, fuzz::Input& input, What what) {
  static const auto path = fuzz::scratchPath("contacts.db");
  std::filesystem::remove_all(path + ".copies");
  auto bytes = Sound::shared().bytes;
  auto log = Sound::shared().log;
  if (form == 0) {
    bytes = input.rest();
    log.clear();
  } else {
    fuzz::patch(form == 1 ? bytes : log, input);
  }
  fuzz::writeDatabase(path, bytes, log);
  tryStore(path, nullptr, what);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const failures::Watch watch;
  fuzz::Input input(data, size);
  const auto what = whatToRead(input.byte());
  const auto form = input.byte() % 32;
  if (form < 3) {
    tryBytes(form, input, what);
  } else {
    static Rows rows(Sound::shared());
    rows.change(input);
    tryStore(rows.path(), &rows.source(), what);
  }
  return 0;
}
