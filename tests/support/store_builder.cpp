#include "tests/support/store_builder.hpp"

#include <stdexcept>

#include "ox/base/sqlite/connection.hpp"
#include "ox/base/store_location.hpp"
#include "tests/support/switched_source.hpp"

namespace ox::support {
namespace {

PropertyBag bagOf(const PersonValues& values) {
  PropertyBag bag;
  bag.set(property_id::kFirst, Object(values.first));
  bag.set(property_id::kMiddle, Object(values.middle));
  bag.set(property_id::kLast, Object(values.last));
  bag.set(property_id::kOrganization, Object(values.company));
  bag.set(property_id::kNickname, Object(values.nickname));
  bag.set(property_id::kNote, Object(values.note));
  if (!values.phones.empty()) bag.set(property_id::kPhone, multiValue(values.phones));
  if (!values.emails.empty()) bag.set(property_id::kEmail, multiValue(values.emails));
  for (const auto& [property, value] : values.more) bag.set(property, value);
  return bag;
}

NewRecord newPerson(const std::string& identifier, const std::string& container,
                    const PersonValues& values) {
  return {RecordKey::of(identifier), RecordKind::Person, container, bagOf(values), values.image};
}

}  // namespace

PropertyValue multiValue(const std::vector<LabelledValue>& entries) {
  MultiValue value;
  for (const auto& entry : entries) {
    const auto identifier = value.add(entry.value, entry.label);
    if (entry.main) value.primary = identifier;
  }
  return std::make_shared<const MultiValue>(std::move(value));
}

StoreBuilder::StoreBuilder() : StoreBuilder(realSource()) {}

StoreBuilder::StoreBuilder(ContactSource& source) : source_(&source) {}

StoreBuilder& StoreBuilder::run(SaveRequest request) {
  if (!source_->execute(request)) throw std::runtime_error("not built: " + request.reason);
  return *this;
}

StoreBuilder& StoreBuilder::container(const std::string& identifier, const std::string& name,
                                      std::int32_t type) {
  container_ = identifier;
  for (const auto& known : source_->containers()) {
    if (known->identifier == identifier) return *this;
  }
  SaveRequest request;
  request.newContainers.push_back({identifier, name, type});
  return run(std::move(request));
}

StoreBuilder& StoreBuilder::twinContainer(const std::string& identifier, const std::string& name,
                                          std::int32_t type) {
  source_->containers();  // makes the file
  sqlite::Connection store(contactStorePath(), sqlite::Connection::Mode::ReadWrite);
  auto insert = store.prepare("INSERT INTO container(identifier, name, type) VALUES(?1, ?2, ?3)");
  insert.bindText(1, identifier).bindText(2, name).bind(3, type).run();
  return in(identifier);
}

StoreBuilder& StoreBuilder::in(const std::string& identifier) {
  container_ = identifier;
  return *this;
}

StoreBuilder& StoreBuilder::person(const std::string& identifier, const PersonValues& values) {
  SaveRequest request;
  request.additions.push_back(newPerson(identifier, container_, values));
  return run(std::move(request));
}

StoreBuilder& StoreBuilder::group(const std::string& identifier, TextView name) {
  NewRecord record{RecordKey::of(identifier), RecordKind::Group, container_, {}, nullptr};
  record.properties.set(property_id::kGroupName, Object(name));
  SaveRequest request;
  request.additions.push_back(std::move(record));
  return run(std::move(request));
}

StoreBuilder& StoreBuilder::member(const std::string& group, const std::string& person) {
  SaveRequest request;
  request.links.push_back({RecordKey::of(group), RecordKey::of(person)});
  return run(std::move(request));
}

StoreBuilder& StoreBuilder::members(const std::string& group,
                                    std::initializer_list<std::string> persons) {
  SaveRequest request;
  for (const auto& person : persons) {
    request.links.push_back({RecordKey::of(group), RecordKey::of(person)});
  }
  return run(std::move(request));
}

StoreBuilder& StoreBuilder::subgroup(const std::string& parent, const std::string& child) {
  return member(parent, child);
}

StoreBuilder& StoreBuilder::persons(const std::string& prefix, std::size_t count) {
  SaveRequest request;
  for (std::size_t i = 0; i < count; ++i) {
    const auto name = prefix + std::to_string(i);
    request.additions.push_back(newPerson(name, container_, {.first = name}));
  }
  return run(std::move(request));
}

}  // namespace ox::support
