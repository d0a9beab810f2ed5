#include "OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "base/text/transcription.hpp"

namespace ox {
namespace {

// The inner object of a value that is not a multiple one; missing otherwise.
Object innerOf(const OxValuePtr& value) {
  const auto single = std::dynamic_pointer_cast<OxMutableSingleValue>(value);
  return single ? single->value() : Object();
}

// Missing only when the person has no name part at all.
Text nameOf(const _ABPerson& person) {
  const auto name = innerOf(person.valueByPropertyName(OxProPertyName)).host<OxObjectPersonName>();
  return name ? name->displayString() : std::nullopt;
}

Text companyOf(const _ABPerson& person) {
  return innerOf(person.valueByPropertyName(OxProPertyCompany)).toText();
}

}  // namespace

RecordTextTable& _ABPerson::dictionaryNameSave() {
  static auto& dic2 = *new RecordTextTable;
  return dic2;
}

RecordTextTable& _ABPerson::dictionaryPinyinSave() {
  static auto& dic1 = *new RecordTextTable;
  return dic1;
}

Text _ABPerson::displayName() const {
  if (auto stored = dictionaryNameSave().find(key())) return stored;
  Text name = nameOf(*this);
  // An empty name counts as one: the company stands in only where there is none.
  if (!name) name = companyOf(*this);
  if (!name) name = "";
  dictionaryNameSave().set(key(), *name);
  return name;
}

Text _ABPerson::nameChineesPinyin() const {
  if (auto stored = dictionaryPinyinSave().find(key())) return stored;
  Text pinyin = transformChinese(displayName());
  if (!pinyin) pinyin = "";
  dictionaryPinyinSave().set(key(), *pinyin);
  return pinyin;
}

Text _ABPerson::transformChinese(TextView text) const {
  return text ? Text(transcribeToLatin(*text)) : std::nullopt;
}

void _ABPerson::removeDisplayNameCache() {
  dictionaryNameSave().remove(key());
  dictionaryPinyinSave().remove(key());
  dictionarySave().remove(key());
}

}  // namespace ox
