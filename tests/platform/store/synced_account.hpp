#pragma once

#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "ox/platform/store/store_source.hpp"

namespace ox::support {

inline constexpr const char* kTeam = "T:ABAccount";

SyncLogin syncLogin(const std::string& name);
SyncBook syncBook(const std::string& container);
// Of a record in that account, at "/ann/team/<record>.vcf".
SyncCardChange syncCard(const std::string& record, std::uint64_t fingerprint);
// Likewise.
NewRecord syncPerson(const std::string& id, const std::string& first);

// An account that is in step with a book, with a card for each of its two persons, "ann" and "ben":
// cards 1 and 2.
class SyncedAccount : public testing::Test {
 protected:
  void SetUp() override;

  static std::string storePath();
  static RecordKey key(const std::string& id) { return RecordKey::of(id); }

  // Writes those rows alone; whether they were, else the reason is told below.
  bool execute(SyncRows rows);
  void edit(const std::string& id, const char* note);
  void remove(const std::string& id);
  std::uint64_t fingerprintNow(const std::string& id);
  Text firstName(const std::string& id);
  // "ann.vcf changed" or "ben.vcf gone", one for each card that is told as changed.
  std::vector<std::string> changes();
  std::vector<std::string> problems();
  // How many rows a table has.
  static std::int64_t count(const std::string& table);
  // The last command is taken back.
  bool undo();

  std::shared_ptr<ContactSource> source = openStoreSource(StoreAddress(storePath()));
  SyncSource& sync = source->sync();
  std::string reason;
};

}  // namespace ox::support
