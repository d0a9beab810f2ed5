#include "ox/platform/store/search/search_index.hpp"

#include <algorithm>
#include <bit>
#include <cstring>

#include "ox/base/private_file.hpp"
#include "ox/base/sqlite/row_sum.hpp"
#include "ox/base/text/search_forms.hpp"

namespace ox {
namespace {

constexpr std::int64_t kRowsInBlock = 4096;
constexpr std::size_t kBlockBytes = kRowsInBlock / 8;
constexpr auto kGrams = static_cast<std::int64_t>(kSearchGrams);
constexpr std::int64_t kApplicationId = 0x4F584644;  // "OXFD"

// A row that cannot be found any more, because the way to it is damaged, must not pass for one that
// is not there: reach counts the blocks, a block knows its grams, and a person who is gone stays as
// an empty text, for whom the grams of a block still lead to.
constexpr const char* kTables = R"sql(
CREATE TABLE reach(
  forms TEXT NOT NULL,
  store BLOB NOT NULL,
  number INTEGER NOT NULL,
  name BLOB NOT NULL,
  blocks INTEGER NOT NULL,
  SUM(forms, store, number, name, blocks));
CREATE TABLE block(
  id INTEGER PRIMARY KEY,
  grams BLOB NOT NULL,
  SUM(id, grams));
CREATE TABLE person(
  record INTEGER PRIMARY KEY,
  text BLOB NOT NULL,
  SUM(record, text));
CREATE TABLE grams(
  id INTEGER PRIMARY KEY,
  rows BLOB NOT NULL,
  SUM(id, rows));
)sql";

// What decides which texts are found by what.
std::string formsInUse() {
  return std::to_string(kSearchTextVersion) + " " + searchFormsVersion();
}

[[noreturn]] void throwDamaged() {
  throw DamagedIndex("a row of the search index is damaged or missing");
}

void requireSound(const sqlite::Statement& row, int column) {
  if (row.integer(column) == 0) throwDamaged();
}

constexpr std::size_t kGramBytes = kSearchGrams / 8;

bool isSet(std::string_view bits, std::size_t place) {
  return ((static_cast<unsigned char>(bits[place / 8]) >> (place % 8)) & 1U) != 0;
}

// Whether it was not set before.
bool set(std::string& bits, std::size_t place) {
  if (isSet(bits, place)) return false;
  auto& byte = bits[place / 8];
  byte = static_cast<char>(static_cast<unsigned char>(byte) | (1U << (place % 8)));
  return true;
}

// One bit for each row of a block.
using Bits = std::array<std::uint64_t, kBlockBytes / 8>;
static_assert(std::endian::native == std::endian::little);

Bits& operator&=(Bits& bits, const Bits& others) {
  std::ranges::transform(bits, others, bits.begin(), std::bit_and());
  return bits;
}

Bits& operator|=(Bits& bits, const Bits& others) {
  std::ranges::transform(bits, others, bits.begin(), std::bit_or());
  return bits;
}

bool isNone(const Bits& bits) {
  return std::ranges::all_of(bits, [](auto word) { return word == 0; });
}

Bits filled(std::uint64_t word) {
  Bits bits;
  bits.fill(word);
  return bits;
}

// Which rows of a block may match, asked gram by gram.
class Block {
 public:
  // The grams that it has at all are borrowed.
  Block(sqlite::Statement& grams, std::int64_t block, std::string_view has)
      : grams_(grams), block_(block), has_(has) {}

  Bits candidates(const std::vector<std::vector<SearchQuery::Grams>>& terms) {
    auto all = filled(~std::uint64_t{0});
    for (const auto& either : terms) {
      auto any = filled(0);
      for (const auto& grams : either) any |= with(grams);
      all &= any;
      if (isNone(all)) break;
    }
    return all;
  }

 private:
  Bits with(const SearchQuery::Grams& grams) {
    auto all = filled(~std::uint64_t{0});
    for (const auto gram : grams) {
      all &= with(gram);
      if (isNone(all)) break;
    }
    return all;
  }

  Bits with(std::size_t gram) {
    auto bits = filled(0);
    if (!isSet(has_, gram)) return bits;
    const sqlite::StatementScope scope(grams_);
    grams_.bind(1, block_ * kGrams + static_cast<std::int64_t>(gram));
    if (!grams_.step()) throwDamaged();
    requireSound(grams_, 1);
    const auto stored = grams_.blob(0);
    if (stored.size() > kBlockBytes) throwDamaged();
    std::memcpy(bits.data(), stored.data(), stored.size());
    return bits;
  }

  sqlite::Statement& grams_;
  std::int64_t block_;
  std::string_view has_;
};

}  // namespace

SearchIndex::SearchIndex(const std::string& path, int busyMilliseconds) {
  createPrivateFile(path);
  file_ = sqlite::Connection(path, sqlite::Connection::Mode::ReadWrite);
  prepare(busyMilliseconds);
}

SearchIndex::SearchIndex() : file_(":memory:", sqlite::Connection::Mode::ReadWriteCreate) {
  prepare(0);
}

// Tables and mark are one transaction, so that whoever is killed meanwhile leaves an empty file.
void SearchIndex::prepare(int busyMilliseconds) {
  file_.setBusyTimeout(busyMilliseconds);
  file_.execute("PRAGMA cache_size=-8192; PRAGMA cell_size_check=ON; PRAGMA secure_delete=ON");
  if (file_.queryInteger("PRAGMA application_id") == 0) {
    sqlite::Transaction transaction(file_);
    if (file_.queryInteger("SELECT count(*) FROM sqlite_schema") == 0) {
      file_.execute(sqlite::withRowSums(kTables).c_str());
      file_.execute(("PRAGMA application_id=" + std::to_string(kApplicationId)).c_str());
      transaction.commit();
    }
  }
  if (file_.queryInteger("PRAGMA application_id") != kApplicationId) {
    throw DamagedIndex("not a search index");
  }
  grams_ = file_.prepare("SELECT rows, sound FROM grams WHERE id = ?1");
  person_ = file_.prepare("SELECT record, text, checksum FROM person WHERE record = ?1");
}

std::optional<SearchIndex::Reach> SearchIndex::reach() {
  auto row = file_.prepare("SELECT forms, store, number, name, blocks, sound FROM reach");
  if (!row.step()) return std::nullopt;
  requireSound(row, 5);
  if (row.text(0) != formsInUse()) return std::nullopt;
  Reach reach{std::string(row.blob(1)), {}};
  reach.moment.number = row.integer(2);
  const auto name = row.blob(3);
  if (name.size() != reach.moment.name.size()) throwDamaged();
  std::memcpy(reach.moment.name.data(), name.data(), name.size());
  return reach;
}

std::optional<std::vector<std::int64_t>> SearchIndex::find(const SearchQuery& query,
                                                           const Reach& wanted) {
  const sqlite::Snapshot snapshot(file_);
  if (reach() != wanted) return std::nullopt;
  std::vector<std::int64_t> found;
  const auto terms = query.grams();
  auto blocks = file_.prepare("SELECT id, grams, sound FROM block ORDER BY id");
  std::int64_t count = 0;
  for (; blocks.step(); ++count) {
    requireSound(blocks, 2);
    const auto grams = blocks.blob(1);
    if (grams.size() != kGramBytes) throwDamaged();
    const auto block = blocks.integer(0);
    const auto candidates = Block(grams_, block, grams).candidates(terms);
    for (std::size_t word = 0; word < candidates.size(); ++word) {
      for (auto left = candidates[word]; left != 0; left &= left - 1) {
        const auto place = static_cast<std::int64_t>(word) * 64 + std::countr_zero(left);
        const auto row = block * kRowsInBlock + place;
        if (isMatch(row, query)) found.push_back(row);
      }
    }
  }
  if (count != file_.queryInteger("SELECT blocks FROM reach")) throwDamaged();
  return found;
}

bool SearchIndex::isMatch(std::int64_t row, const SearchQuery& query) {
  const sqlite::StatementScope scope(person_);
  person_.bind(1, row);
  if (!person_.step() || !sqlite::isSound(person_, 2)) throwDamaged();
  return query.matches(person_.blob(1));
}

void SearchIndex::Update::clear() {
  index_.file_.execute(
      "DELETE FROM reach; DELETE FROM block; DELETE FROM person; DELETE FROM grams");
  block_ = -1;
}

void SearchIndex::Update::put(std::int64_t row, std::string_view text) {
  if (row < 1) throwDamaged();
  if (row / kRowsInBlock != block_) enterBlock(row / kRowsInBlock);
  const auto place = static_cast<std::size_t>(row % kRowsInBlock);
  for (std::size_t from = 0; from < text.size();) {
    const auto end = std::min(text.find('\n', from), text.size());
    forEachGram(text.substr(from + 1, end - from - 1),
                [&](std::size_t gram) { note(gram, place); });
    from = end + 1;
  }
  if (!put_) {
    put_ = index_.file_.prepare("INSERT OR REPLACE INTO person(record, text) VALUES(?1, ?2)");
  }
  put_.bind(1, row).bindBlob(2, text).run();
}

// What a text has lost stays noted: that costs a look at somebody who does not match.
void SearchIndex::Update::note(std::size_t gram, std::size_t place) {
  auto& rows = rows_[gram];
  if (rows.bits.empty()) {
    rows.bits.assign(kBlockBytes, '\0');
    if (!set(grams_, gram)) {
      auto& stored = index_.grams_;
      const sqlite::StatementScope scope(stored);
      stored.bind(1, block_ * kGrams + static_cast<std::int64_t>(gram));
      if (!stored.step()) throwDamaged();
      requireSound(stored, 1);
      const auto bits = stored.blob(0);
      if (bits.size() > kBlockBytes) throwDamaged();
      rows.bits.replace(0, bits.size(), bits);
    }
  }
  if (set(rows.bits, place)) rows.isChanged = true;
}

void SearchIndex::Update::enterBlock(std::int64_t block) {
  writeBlock();
  rows_.fill({});
  block_ = block;
  grams_.assign(kGramBytes, '\0');
  auto stored = index_.file_.prepare("SELECT grams, sound FROM block WHERE id = ?1");
  if (!stored.bind(1, block).step()) return;
  requireSound(stored, 1);
  grams_ = stored.blob(0);
  if (grams_.size() != kGramBytes) throwDamaged();
}

void SearchIndex::Update::writeBlock() {
  if (block_ < 0) return;
  index_.file_.prepare("INSERT OR REPLACE INTO block(id, grams) VALUES(?1, ?2)")
      .bind(1, block_)
      .bindBlob(2, grams_)
      .run();
  auto write = index_.file_.prepare("INSERT OR REPLACE INTO grams(id, rows) VALUES(?1, ?2)");
  for (std::size_t gram = 0; gram < rows_.size(); ++gram) {
    if (!rows_[gram].isChanged) continue;
    // Of the bytes those up to the last one that says anything: most stores are small.
    const std::string_view bits(rows_[gram].bits);
    write.bind(1, block_ * kGrams + static_cast<std::int64_t>(gram))
        .bindBlob(2, bits.substr(0, bits.find_last_not_of('\0') + 1))
        .run();
  }
}

void SearchIndex::Update::commit(const Reach& reach) {
  writeBlock();
  put_ = {};
  index_.file_.execute("DELETE FROM reach");
  const auto forms = formsInUse();
  const std::string_view name(reinterpret_cast<const char*>(reach.moment.name.data()),
                              reach.moment.name.size());
  index_.file_
      .prepare(
          "INSERT INTO reach(forms, store, number, name, blocks) "
          "SELECT ?1, ?2, ?3, ?4, count(*) FROM block")
      .bindText(1, forms)
      .bindBlob(2, reach.store)
      .bind(3, reach.moment.number)
      .bindBlob(4, name)
      .run();
  transaction_.commit();
}

}  // namespace ox
