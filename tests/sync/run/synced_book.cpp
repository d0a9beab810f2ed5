#include "tests/sync/run/synced_book.hpp"

#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <utility>

#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/base/uuid.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/sync/run/book_run.hpp"
#include "ox/transfer/person_tags.hpp"
#include "tests/support/store_builder.hpp"

namespace ox::test {
namespace {

void execute(SaveRequest& request) {
  if (!containerSource().execute(request)) throw std::runtime_error(request.reason);
}

PropertyBag valuesOf(const RecordKey& record) {
  const auto values = containerSource().committedValues(record);
  if (!values) throw std::runtime_error("there is no " + record.text());
  return *values;
}

PropertyValue phoneValue(const std::vector<std::string>& phones) {
  std::vector<support::LabelledValue> entries;
  for (const auto& phone : phones) entries.push_back({"_$!<Mobile>!$_", phone});
  return entries.empty() ? PropertyValue() : support::multiValue(entries);
}

}  // namespace

SyncedBook::SyncedBook(BookElsewhere& elsewhere, const std::string& name) : SyncedBook(name) {
  elsewhere_ = &elsewhere;
}

SyncedBook::SyncedBook(const std::string& name) : container_(uuidText(makeUuid()) + ":ABAccount") {
  SaveRequest request;
  request.newContainers.push_back({container_, name, 3});
  SyncLogin login;
  login.name = name;
  login.kind = "folder";
  request.sync.logins.push_back(login);
  SyncRows::BookOfLogin book;
  book.login = name;
  book.book.container = container_;
  book.book.url = "memory:";
  book.book.name = name;
  request.sync.books.push_back(book);
  execute(request);
}

sync::BookReport SyncedBook::run(const sync::SyncOptions& options) {
  return runWith(*elsewhere_, options);
}

sync::BookReport SyncedBook::runWith(sync::RemoteBook& elsewhere,
                                     const sync::SyncOptions& options) {
  sync::BookReport report;
  report.container = container_;
  report.account = "Book";
  for (const auto& book : syncSource().syncBooks()) {
    if (book.container != container_) continue;
    try {
      sync::BookRun::Start start;
      start.listsAll = options.listsAll;
      sync::runBook(elsewhere, book, options, start, report);
    } catch (const sync::RemoteError& error) {
      report.state = sync::BookReport::State::Failed;
      report.failure = error.what();
      report.kind = error.kind();
    }
  }
  for (const auto& conflict : syncSource().syncConflicts()) {
    if (conflict.container == container_) ++report.conflicts;
  }
  return report;
}

sync::BookReport SyncedBook::runClean() {
  auto report = run();
  EXPECT_EQ(report.state, sync::BookReport::State::InStep);
  EXPECT_EQ(report.failure, "");
  EXPECT_EQ(report.conflicts, 0U);
  EXPECT_TRUE(report.refused.empty());
  return report;
}

RecordKey SyncedBook::addPerson(const std::string& first, const std::string& last,
                                const std::vector<std::string>& phones) {
  NewRecord record;
  record.key = RecordKey::make(RecordKind::Person);
  record.container = container_;
  record.properties.set(property_id::kFirst, Object(first));
  if (!last.empty()) record.properties.set(property_id::kLast, Object(last));
  record.properties.set(property_id::kPhone, phoneValue(phones));
  SaveRequest request;
  request.additions.push_back(record);
  execute(request);
  return record.key;
}

RecordKey SyncedBook::addGroup(const std::string& name, const std::vector<RecordKey>& members) {
  NewRecord record;
  record.key = RecordKey::make(RecordKind::Group);
  record.kind = RecordKind::Group;
  record.container = container_;
  record.properties.set(property_id::kGroupName, Object(name));
  SaveRequest request;
  request.additions.push_back(record);
  for (const auto& member : members) request.links.push_back({record.key, member});
  execute(request);
  return record.key;
}

void SyncedBook::edit(const RecordKey& record, const std::function<void(PropertyBag&)>& change) {
  ReplacedRecord replaced;
  replaced.key = record;
  replaced.properties = valuesOf(record);
  replaced.keepsImage = true;
  change(replaced.properties);
  SaveRequest request;
  request.replacements.push_back(std::move(replaced));
  execute(request);
}

void SyncedBook::set(const RecordKey& record, PropertyId property, const std::string& text) {
  edit(record, [&](PropertyBag& values) {
    values.set(property, text.empty() ? PropertyValue() : PropertyValue(Object(text)));
  });
}

void SyncedBook::addPhone(const RecordKey& record, const std::string& phone) {
  edit(record, [&](PropertyBag& values) {
    const auto* held = values.find(property_id::kPhone);
    auto phones = held != nullptr ? *std::get<MultiValuePtr>(*held) : MultiValue();
    phones.add(phone, "_$!<Mobile>!$_");
    values.set(property_id::kPhone, std::make_shared<const MultiValue>(std::move(phones)));
  });
}

void SyncedBook::setPhoto(const RecordKey& record, const std::string& bytes) {
  ReplacedRecord replaced;
  replaced.key = record;
  replaced.properties = valuesOf(record);
  replaced.image = bytes.empty() ? nullptr : makeData(bytes);
  SaveRequest request;
  request.replacements.push_back(std::move(replaced));
  execute(request);
}

void SyncedBook::link(const RecordKey& group, const RecordKey& child) {
  SaveRequest request;
  request.links.push_back({group, child});
  execute(request);
}

void SyncedBook::unlink(const RecordKey& group, const RecordKey& child) {
  SaveRequest request;
  request.removedLinks.push_back({group, child});
  execute(request);
}

void SyncedBook::remove(const RecordKey& record) {
  SaveRequest request;
  request.removals.push_back({record});
  execute(request);
}

void SyncedBook::setTags(const RecordKey& person, const std::vector<std::string>& tags) {
  OxTagManager::tagManagerWithID(vcard::tagManagerOf(container_))
      ->setTags_forPersonID(tags, person.text());
}

std::vector<RecordKey> SyncedBook::persons() const {
  return containerSource().recordsIn(container_, RecordKind::Person);
}

std::vector<RecordKey> SyncedBook::groups() const {
  return containerSource().recordsIn(container_, RecordKind::Group);
}

RecordKey SyncedBook::onlyPerson() const {
  const auto all = persons();
  if (all.size() != 1) throw std::logic_error("there are " + std::to_string(all.size()));
  return all.front();
}

std::string SyncedBook::text(const RecordKey& record, PropertyId property) const {
  const auto values = valuesOf(record);
  const auto* text = values.text(property);
  return text != nullptr ? *text : std::string();
}

std::vector<std::string> SyncedBook::phones(const RecordKey& record) const {
  std::vector<std::string> phones;
  const auto values = valuesOf(record);
  const auto* value = values.find(property_id::kPhone);
  if (value == nullptr) return phones;
  for (const auto& entry : std::get<MultiValuePtr>(*value)->entries) {
    phones.push_back(entry.value.text() != nullptr ? *entry.value.text() : std::string());
  }
  return phones;
}

std::string SyncedBook::photo(const RecordKey& record) const {
  const auto photo = containerSource().committedImage(record);
  return photo ? *photo : std::string();
}

std::vector<RecordKey> SyncedBook::members(const RecordKey& group) const {
  const auto members = containerSource().committedChildren(group, RecordKind::Person);
  return members ? *members : std::vector<RecordKey>();
}

std::vector<std::string> SyncedBook::tags(const RecordKey& person) const {
  return OxTagManager::tagManagerWithID(vcard::tagManagerOf(container_))
      ->tagsByPersonID(person.text())
      .value_or(std::vector<std::string>());
}

std::vector<std::string> SyncedBook::lines() const {
  std::vector<std::string> lines;
  for (const auto& person : persons()) {
    auto line = text(person, property_id::kFirst) + " " + text(person, property_id::kLast) + ":";
    for (const auto& phone : phones(person)) line += " " + phone;
    if (const auto note = text(person, property_id::kNote); !note.empty()) line += "; " + note;
    lines.push_back(std::move(line));
  }
  return lines;
}

std::string cardText(const std::string& uid, const std::string& first, const std::string& last,
                     const std::vector<std::string>& lines) {
  auto text = "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:" + uid + "\r\nN:" + last + ";" + first +
              ";;;\r\nFN:" + first + (last.empty() ? "" : " " + last) + "\r\n";
  for (const auto& line : lines) text += line + "\r\n";
  return text + "END:VCARD\r\n";
}

std::string groupText(const std::string& uid, const std::string& name,
                      const std::vector<std::string>& members) {
  auto text = "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:" + uid + "\r\nN:" + name + "\r\nFN:" + name +
              "\r\nX-ADDRESSBOOKSERVER-KIND:group\r\n";
  for (const auto& member : members) {
    text += "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:" + member + "\r\n";
  }
  return text + "END:VCARD\r\n";
}

}  // namespace ox::test
