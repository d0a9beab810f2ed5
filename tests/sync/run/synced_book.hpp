#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "ox/base/record_key.hpp"
#include "ox/records/property_bag.hpp"
#include "ox/sync/synchronise.hpp"
#include "tests/sync/run/book_elsewhere.hpp"

namespace ox::test {

// A container of the test's store and a book elsewhere that it is in step with, and what a test
// does to the records. Every edit is committed at once, as by another program.
class SyncedBook {
 public:
  explicit SyncedBook(BookElsewhere& elsewhere, const std::string& name = "Book");
  // Where each run has its own way to the book: `runWith` alone may be used.
  explicit SyncedBook(const std::string& name);

  // One run; failures of the book are in the report, as synchronise() tells them.
  sync::BookReport run(const sync::SyncOptions& options = {});
  sync::BookReport runWith(sync::RemoteBook& elsewhere, const sync::SyncOptions& options = {});
  // A run that must end in step with nothing left open.
  sync::BookReport runClean();

  const std::string& container() const { return container_; }

  RecordKey addPerson(const std::string& first, const std::string& last = {},
                      const std::vector<std::string>& phones = {});
  RecordKey addGroup(const std::string& name, const std::vector<RecordKey>& members = {});
  void edit(const RecordKey& record, const std::function<void(PropertyBag&)>& change);
  void set(const RecordKey& record, PropertyId property, const std::string& text);
  void addPhone(const RecordKey& record, const std::string& phone);
  void setPhoto(const RecordKey& record, const std::string& bytes);
  void link(const RecordKey& group, const RecordKey& child);
  void unlink(const RecordKey& group, const RecordKey& child);
  void remove(const RecordKey& record);
  void setTags(const RecordKey& person, const std::vector<std::string>& tags);

  std::vector<RecordKey> persons() const;
  std::vector<RecordKey> groups() const;
  RecordKey onlyPerson() const;
  std::string text(const RecordKey& record, PropertyId property) const;
  std::vector<std::string> phones(const RecordKey& record) const;
  std::string photo(const RecordKey& record) const;
  std::vector<RecordKey> members(const RecordKey& group) const;
  std::vector<std::string> tags(const RecordKey& person) const;
  // "First Last: phone, phone; note", a line a person in their order.
  std::vector<std::string> lines() const;

 private:
  BookElsewhere* elsewhere_ = nullptr;
  std::string container_;
};

// A card of version 3.0 with that UID, and these lines after the name.
std::string cardText(const std::string& uid, const std::string& first, const std::string& last,
                     const std::vector<std::string>& lines = {});
std::string groupText(const std::string& uid, const std::string& name,
                      const std::vector<std::string>& members);

}  // namespace ox::test
