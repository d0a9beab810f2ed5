#include "oxcontacts/output/past_values.hpp"

#include "ox/OxMacAddressBookSDK/admin/stored_names.hpp"
#include "ox/records/property_keys.hpp"
#include "oxcontacts/output/shown_value.hpp"
#include "oxcontacts/output/value_json.hpp"

namespace ox::program {
namespace {

std::string textIn(const PropertyBag& properties, RecordKind kind, std::string_view name) {
  const auto* text = properties.text(property_table::idOf(kind, name));
  return text != nullptr ? *text : std::string();
}

const MultiValue* entriesOf(const PropertyValue& value) {
  const auto* entries = std::get_if<MultiValuePtr>(&value);
  return entries != nullptr ? entries->get() : nullptr;
}

}  // namespace

std::string nameIn(const PropertyBag& properties) {
  auto name = textIn(properties, RecordKind::Group, kABGroupNameProperty);
  for (const auto part : {kABFirstNameProperty, kABMiddleNameProperty, kABLastNameProperty}) {
    const auto text = textIn(properties, RecordKind::Person, part);
    if (!text.empty()) name += (name.empty() ? "" : " ") + text;
  }
  return name.empty() ? textIn(properties, RecordKind::Person, kABOrganizationProperty) : name;
}

std::string readableValue(const PropertyValue& value) {
  if (const auto* object = std::get_if<Object>(&value)) return readableText(*object);
  std::string text;
  const auto* entries = entriesOf(value);
  if (entries == nullptr) return text;
  for (const auto& entry : entries->entries) {
    if (!text.empty()) text += "; ";
    if (entry.label && !entry.label->empty())
      text += labelWords(labelTitleOfStored(*entry.label)) + " ";
    text += readableText(entry.value);
  }
  return text;
}

Json jsonOfStored(const PropertyValue& value) {
  if (isMissing(value)) return {};
  if (const auto* object = std::get_if<Object>(&value)) return jsonOf(*object);
  Json list = Json::array();
  const auto* entries = entriesOf(value);
  for (const auto& entry : entries->entries) {
    list.push_back({{"label", jsonOf(entry.label)},
                    {"labelDisplayName",
                     entry.label ? Json(labelWords(labelTitleOfStored(*entry.label))) : Json()},
                    {"value", jsonOf(entry.value)},
                    {"main", entry.identifier == entries->primary}});
  }
  return list;
}

Json jsonOfStored(const PropertyBag& properties) {
  Json list = Json::array();
  for (const auto& [id, value] : properties.entries()) {
    const auto& name = property_table::nameOf(id);
    Json property = {{"name", propertyNameOfStored(name)},
                     {"displayName", propertyTitleOfStored(name)}};
    property[entriesOf(value) != nullptr ? "values" : "value"] = jsonOfStored(value);
    list.push_back(std::move(property));
  }
  return list;
}

void addStoredRows(const PropertyBag& properties, Table& table) {
  for (const auto& [id, value] : properties.entries()) {
    auto title = propertyTitleOfStored(property_table::nameOf(id));
    const auto* entries = entriesOf(value);
    if (entries == nullptr) {
      table.addRow({std::move(title), "", readableValue(value)});
      continue;
    }
    for (const auto& entry : entries->entries) {
      auto label = entry.label ? labelWords(labelTitleOfStored(*entry.label)) : std::string();
      if (entry.identifier == entries->primary) label += " *";
      table.addRow({std::move(title), std::move(label), readableText(entry.value)});
      title.clear();
    }
  }
}

}  // namespace ox::program
