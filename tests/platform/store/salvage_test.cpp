// What a damaged store still holds comes back: whatever is damaged costs what stands there alone.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>

#include "ox/base/sqlite/connection.hpp"
#include "ox/base/sqlite/page_rows.hpp"
#include "ox/platform/store/salvage/store_salvage.hpp"
#include "ox/platform/store/schema/backup.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

namespace fs = std::filesystem;
using support::StoreBuilder;
using support::temporaryPath;

constexpr std::size_t kPersons = 180;
constexpr std::size_t kPageBytes = 4096;
constexpr std::size_t kFrameBytes = 24 + kPageBytes;

std::string storePath() {
  return support::StoreEnvironment::instance().contactStore().string();
}

// Persons of two accounts, some in a group, some with a picture that takes several pages.
void fillStore() {
  StoreBuilder store;
  std::mt19937 chance(1);
  std::string last;
  for (std::size_t i = 0; i < kPersons; ++i) {
    if (i == kPersons / 2) store.container("C:ABAccount", "Cloud", 3);
    support::PersonValues values;
    values.first = "First" + std::to_string(i);
    values.note = std::string(20 + chance() % 400, static_cast<char>('a' + i % 26));
    if (i % 30 == 0)
      values.image = makeData(std::string(5'000 + i, static_cast<char>('A' + i % 7)));
    last = RecordKey::make(RecordKind::Person).text();
    store.person(last, values);
  }
  const auto group = RecordKey::make(RecordKind::Group).text();
  store.group(group, "Team").member(group, last);
}

// A copy of the store in one file, without a log.
std::string copiedStore() {
  auto path = temporaryPath("damaged.db").string();
  copyStore(storePath(), path);
  return path;
}

struct Recovered {
  SalvageReport report;
  std::string path;
};

Recovered recover(const std::string& from) {
  Recovered result;
  result.path = temporaryPath("recovered.db").string();
  fs::remove(result.path);
  StoreSalvage salvage(from, result.path);
  result.report = salvage.take();
  salvage.put();
  return result;
}

// Everything but row numbers and the journal, one line a record.
std::vector<std::string> contentOf(const std::string& path) {
  sqlite::Connection store(path, sqlite::Connection::Mode::ReadWrite);
  auto rows = store.prepare(
      "SELECT hex(r.uid) || ' ' || r.kind || ' ' || a.identifier || ' ' || a.name || ' ' || "
      "hex(c.properties) || ' ' || ifnull(hex(i.data), '') || ' ' || ifnull((SELECT "
      "group_concat(hex(g.uid)) FROM link l JOIN record g ON g.id = l.parent WHERE l.child = r.id),"
      "'') FROM record r JOIN container a ON a.id = r.container "
      "JOIN content c ON c.record = r.id LEFT JOIN image i ON i.id = c.image ORDER BY r.id");
  std::vector<std::string> lines;
  while (rows.step()) lines.emplace_back(rows.text(0));
  return lines;
}

// Identifiers by the rows of their records.
std::map<std::int64_t, std::string> recordsOf(const std::string& path) {
  sqlite::Connection store(path, sqlite::Connection::Mode::ReadWrite);
  auto rows = store.prepare("SELECT id, hex(uid) FROM record");
  std::map<std::int64_t, std::string> all;
  while (rows.step()) all.emplace(rows.integer(0), rows.text(1));
  return all;
}

// The records whose values stand on that page, none of which goes on elsewhere.
std::set<std::int64_t> valuesOn(std::uint32_t page, sqlite::PageRows& rows) {
  std::set<std::int64_t> found;
  const auto form = rows.formOf(page);
  if (form != sqlite::PageRows::Form::Table) return found;
  rows.listed(page, *form, [&](const auto&, const sqlite::PageRow& row) {
    if (row.size() >= 5 && row.is(4, sqlite::PageRow::Type::Blob)) found.insert(row.number());
  });
  return found;
}

void overwrite(const std::string& path, std::size_t from, const std::string& bytes) {
  std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(static_cast<std::streamoff>(from));
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  ASSERT_TRUE(file.good());
}

TEST(Salvage, OfASoundStoreIsTheWholeOfIt) {
  fillStore();
  const auto [report, path] = recover(copiedStore());
  EXPECT_EQ(report.damages, std::vector<std::string>{});
  EXPECT_EQ(report.losses, std::vector<std::string>{});
  EXPECT_EQ(report.records, (RecordCounts{1, kPersons}));
  EXPECT_EQ(report.links, 1U);
  EXPECT_EQ(report.pictures, kPersons / 30);
  EXPECT_EQ(contentOf(path), contentOf(storePath()));
  EXPECT_EQ(storeProblems(path), std::vector<std::string>{});
}

TEST(Salvage, ReadsWhatStandsInTheLogAlone) {
  fillStore();
  const auto from = temporaryPath("damaged.db").string();
  fs::copy_file(storePath(), from);
  fs::copy_file(storePath() + "-wal", from + "-wal");
  const auto log = support::fileBytes(from + "-wal");
  const auto [report, path] = recover(from);
  EXPECT_EQ(report.losses, std::vector<std::string>{});
  EXPECT_EQ(contentOf(path), contentOf(storePath()));
  EXPECT_EQ(support::fileBytes(from + "-wal"), log);
}

// The place of a page in the log that is neither the first nor the last of its commit.
std::size_t withinACommit(const std::string& log) {
  for (auto at = 32 + log.size() / kFrameBytes / 2 * kFrameBytes;; at += kFrameBytes) {
    const auto isCommit = [&](std::size_t frame) {
      return log.substr(frame + 4, 4) != std::string(4, '\0');
    };
    if (!isCommit(at - kFrameBytes) && !isCommit(at)) return at;
  }
}

TEST(Salvage, ADamagedFrameOfTheLogHidesNoneAfterIt) {
  fillStore();
  const auto from = temporaryPath("damaged.db").string();
  fs::copy_file(storePath(), from);
  fs::copy_file(storePath() + "-wal", from + "-wal");
  overwrite(from + "-wal", withinACommit(support::fileBytes(from + "-wal")) + 500, "damage");
  const auto [report, path] = recover(from);
  EXPECT_EQ(report.damages, std::vector<std::string>{
                                "1 page of the log is damaged: something newer may be missing"});
  EXPECT_GE(report.records.persons, kPersons - 20);
  EXPECT_EQ(storeProblems(path), std::vector<std::string>{});
}

// What the head of a frame bears for its own and its page's bytes, behind the frame before it.
std::string sumOfFrame(const std::string& log, std::size_t frame) {
  const auto number = [&](std::size_t at) { return sqlite::bigEndian32(log, at); };
  auto first = number(frame - kFrameBytes + 16);
  auto second = number(frame - kFrameBytes + 20);
  const auto add = [&](std::size_t from, std::size_t bytes) {
    for (auto at = from; at < from + bytes; at += 8) {
      first += __builtin_bswap32(number(at)) + second;
      second += __builtin_bswap32(number(at + 4)) + first;
    }
  };
  add(frame, 8);
  add(frame + 24, kPageBytes);
  std::string sum;
  for (const auto half : {first, second}) {
    for (const int shift : {24, 16, 8, 0}) sum += static_cast<char>(half >> shift);
  }
  return sum;
}

// Whoever makes such a log by hand wants a recovery to go through billions of pages.
TEST(Salvage, BelievesNoLogThatHasRoomForFewerPagesThanItSays) {
  fillStore();
  const auto from = temporaryPath("damaged.db").string();
  fs::copy_file(storePath(), from);
  fs::copy_file(storePath() + "-wal", from + "-wal");
  auto log = support::fileBytes(from + "-wal");
  const auto last = 32 + ((log.size() - 32) / kFrameBytes - 1) * kFrameBytes;
  ASSERT_EQ(sumOfFrame(log, last), log.substr(last + 16, 8));
  log.replace(last + 4, 4, "\xFF\xFF\xFF\xF0");
  log.replace(last + 16, 8, sumOfFrame(log, last));
  overwrite(from + "-wal", 0, log);
  const auto room = (fs::file_size(from) + log.size()) / kPageBytes;
  EXPECT_LE(sqlite::PageFile(from).count(), room);
  const auto [report, path] = recover(from);
  EXPECT_EQ(report.losses, std::vector<std::string>{});
  EXPECT_EQ(contentOf(path), contentOf(storePath()));
}

TEST(Salvage, SeesHowLongPagesAreWhereTheFirstOneIsGone) {
  fillStore();
  for (const std::uint32_t bytes : {512U, 1024U, 2048U, 4096U, 8192U}) {
    const auto from = copiedStore();
    sqlite::Connection(from, sqlite::Connection::Mode::ReadWrite)
        .execute(
            ("PRAGMA journal_mode=DELETE; PRAGMA page_size=" + std::to_string(bytes) + "; VACUUM")
                .c_str());
    overwrite(from, 0, std::string(bytes, '\0'));
    EXPECT_EQ(sqlite::PageFile(from).pageBytes(), bytes);
    EXPECT_EQ(recordsOf(recover(from).path).size(), kPersons + 1);
    fs::remove(from);
  }
}

// Every third page once, some emptied and some full of nonsense.
TEST(Salvage, ALostPageCostsOnlyTheValuesOnIt) {
  fillStore();
  const auto from = copiedStore();
  const auto whole = support::fileBytes(from);
  const auto all = recordsOf(from);
  sqlite::PageFile pages(from);
  sqlite::PageRows rows(pages);
  std::size_t lost = 0;
  for (std::uint32_t page = 1; page <= pages.count(); page += 3) {
    const auto place = (page - 1) * kPageBytes;
    overwrite(from, place, std::string(kPageBytes, page % 2 == 1 ? '\0' : '\x0D'));
    const auto path = recover(from).path;
    overwrite(from, place, whole.substr(place, kPageBytes));

    std::set<std::string> found;
    for (const auto& [row, record] : recordsOf(path)) found.insert(record);
    const auto standing = valuesOn(page, rows);
    for (const auto& [row, record] : all) {
      EXPECT_NE(found.contains(record), standing.contains(row)) << "page " << page << ", " << row;
    }
    lost += standing.size();
    EXPECT_EQ(storeProblems(path), std::vector<std::string>{}) << page;
  }
  EXPECT_GT(lost, kPersons / 4);
}

TEST(Salvage, AFlippedByteCostsNoMoreThanOneRecord) {
  fillStore();
  const auto from = copiedStore();
  const auto whole = support::fileBytes(from);
  const auto content = contentOf(from);
  std::mt19937 chance(7);
  for (int i = 0; i < 60; ++i) {
    const auto place = chance() % whole.size();
    const auto flipped = static_cast<char>(static_cast<unsigned char>(whole[place]) ^ 1U << i % 8);
    overwrite(from, place, std::string(1, flipped));
    const auto [report, path] = recover(from);
    overwrite(from, place, whole.substr(place, 1));

    std::size_t kept = 0;
    auto now = contentOf(path);
    std::ranges::sort(now);
    for (const auto& record : content) kept += std::ranges::binary_search(now, record) ? 1U : 0U;
    EXPECT_GE(kept + 1, content.size()) << "byte " << place;
    const bool isTold = !report.losses.empty() || !report.damages.empty();
    EXPECT_TRUE(isTold || kept == content.size()) << "byte " << place;
  }
}

TEST(Salvage, WhatWasRemovedStaysRemoved) {
  fillStore();
  {
    sqlite::Connection store(storePath(), sqlite::Connection::Mode::ReadWrite);
    store.execute("PRAGMA foreign_keys=ON; DELETE FROM record WHERE id BETWEEN 20 AND 120");
    store.execute("PRAGMA wal_checkpoint(TRUNCATE)");
  }
  const auto from = temporaryPath("damaged.db").string();
  fs::copy_file(storePath(), from);
  const auto [report, path] = recover(from);
  EXPECT_EQ(report.records.persons, kPersons - 101);
  EXPECT_EQ(report.losses, std::vector<std::string>{});
  EXPECT_EQ(contentOf(path), contentOf(from));
}

TEST(Salvage, ADamagedPictureIsToldAndNotShown) {
  fillStore();
  const auto from = copiedStore();
  const auto bytes = support::fileBytes(from);
  const auto picture = bytes.find(std::string(500, 'C'));
  ASSERT_NE(picture, std::string::npos);
  overwrite(from, picture + 100, "x");
  const auto [report, path] = recover(from);
  EXPECT_EQ(report.records.persons, kPersons);
  EXPECT_EQ(report.pictures, kPersons / 30 - 1);
  ASSERT_EQ(report.losses.size(), 1U);
  EXPECT_TRUE(report.losses.front().ends_with(":ABPerson: its picture cannot be read"));
}

TEST(Salvage, WritesOverNothing) {
  fillStore();
  const auto from = copiedStore();
  const auto target = support::temporaryFile("there.db", "mine").string();
  EXPECT_THROW(StoreSalvage(from, target), StoreError);
  EXPECT_EQ(support::fileBytes(target), "mine");
  EXPECT_THROW(StoreSalvage(support::temporaryFile("empty.db", "").string(),
                            temporaryPath("new.db").string())
                   .take(),
               FailureError);
  EXPECT_FALSE(fs::exists(temporaryPath("new.db")));
}

}  // namespace
}  // namespace ox
