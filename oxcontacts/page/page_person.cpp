#include "oxcontacts/page/page_person.hpp"

#include "ox/base/base64.hpp"
#include "ox/base/text/case.hpp"
#include "ox/images/image_codec.hpp"
#include "ox/images/thumbnail.hpp"
#include "ox/records/search_text.hpp"
#include "oxcontacts/output/shown_value.hpp"
#include "oxcontacts/output/value_json.hpp"
#include "oxcontacts/page/links.hpp"

namespace ox::program {
namespace {

// Twice what a page shows at most, for screens of fine dots would want four times the bytes.
constexpr std::uint32_t kPictureSide = 112;

void addUnlessEmpty(Json& json, const char* key, std::string text) {
  if (!text.empty()) json[key] = std::move(text);
}

Json valueJson(const Object& value, const std::string& label, bool isMain, Maps maps) {
  Json json = Json::object();
  addUnlessEmpty(json, "label", label);
  if (isMain) json["main"] = true;
  json[value.as<Date>() == nullptr ? "text" : "date"] = readableText(value);
  addUnlessEmpty(json, "link", linkOf(value));
  if (maps == Maps::Yes) addUnlessEmpty(json, "map", mapLinkOf(value));
  return json;
}

Json valuesJson(const OxValue& value, Maps maps) {
  Json values = Json::array();
  if (const auto* single = dynamic_cast<const OxMutableSingleValue*>(&value)) {
    values.push_back(valueJson(single->value(), "", false, maps));
    return values;
  }
  const auto* multiple = dynamic_cast<const OxMutableMultipleValue*>(&value);
  for (std::uint64_t i = 0; multiple != nullptr && i < multiple->count(); ++i) {
    const auto element = multiple->valueAtIndex(i);
    const auto& label = element->label();
    values.push_back(valueJson(element->value(),
                               label ? labelWords(label->displayName().value_or("")) : "",
                               element == multiple->mainValue(), maps));
  }
  return values;
}

// What the page shows elsewhere than among the fields.
bool isShownApart(const std::string& property) {
  return property == OxProPertyName || property == OxProPertyThumbnail ||
         property == OxProPertyTags;
}

Json fieldsJson(const _ABPerson& person, Maps maps) {
  Json fields = Json::array();
  for (const auto& property : person.notNullValueProperty()) {
    if (isShownApart(property->name())) continue;
    const auto value = shownValue(person, property);
    if (!value) continue;
    auto values = valuesJson(*value, maps);
    if (!values.empty()) fields.push_back({{"name", property->displayName()}, {"values", values}});
  }
  return fields;
}

// The first value, as it is shown; "" without one.
std::string firstText(const _ABPerson& person, std::string_view property) {
  const auto value = person.valueByPropertyName(property);
  if (const auto single = singleOf(value)) return readableText(single->value());
  const auto multiple = multipleOf(value);
  return multiple && multiple->count() > 0 ? readableText(multiple->valueAtIndex(0)->value()) : "";
}

void addSecondLine(const _ABPerson& person, const std::string& name, Json& json) {
  for (const auto property : {OxProPertyCompany, OxProPertyPhone, OxProPertyEmail}) {
    auto text = firstText(person, property);
    if (text.empty() || text == name) continue;
    json["second"] = std::move(text);
    if (property == OxProPertyCompany) json["isCompany"] = true;
    return;
  }
}

std::string pictureOf(const _ABPerson& person) {
  const auto picture = person.thumbnail();
  const auto small = picture ? images::squareThumbnail(*picture, kPictureSide) : nullptr;
  return small ? imageAddress(images::encodeJpeg(*small), "jpeg") : "";
}

}  // namespace

std::string imageAddress(const Data& file, const char* type) {
  if (!file) return {};
  const std::string_view bytes(reinterpret_cast<const char*>(file->data()), file->size());
  return std::string("data:image/") + type + ";base64," + base64(bytes);
}

Json pagePerson(const _ABPerson& person, Maps maps) {
  const auto name = person.displayName().value_or("");
  Json json = {{"name", name}};
  auto latin = person.nameChineesPinyin().value_or("");
  if (foldedForSearch(latin) != foldedForSearch(name)) json["latin"] = std::move(latin);
  addSecondLine(person, name, json);
  addUnlessEmpty(json, "picture", pictureOf(person));
  const auto birthday = singleOf(person.valueByPropertyName(OxProPertyBirthday));
  if (birthday) addUnlessEmpty(json, "birthday", readableText(birthday->value()));
  if (auto tags = person.tagArray(); !tags.empty()) json["tags"] = std::move(tags);
  json["find"] = searchText(person.allValues());
  json["fields"] = fieldsJson(person, maps);
  return json;
}

}  // namespace ox::program
