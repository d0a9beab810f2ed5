// The display name and its transcription, which are worked out once and remembered.
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/tables/record_stamp_table.hpp"
#include "ox/OxMacAddressBookSDK/tables/record_text_table.hpp"
#include "ox/base/failures.hpp"
#include "ox/base/text/transcription.hpp"

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

// What the table holds for the record, else what the step works out, remembered. A text that was
// read while the store failed, or while another thread changed a name, is not remembered.
template <typename WorkOut>
std::string remembered(RecordTextTable& table, const RecordKey& record, WorkOut workOut) {
  if (auto stored = table.find(record)) return std::move(*stored);
  const auto removals = table.removals();
  const failures::Watch watch(failures::Watch::Over::OwnWork);
  std::string text = workOut();
  if (!watch.hasFailures()) table.setUnlessRemoved(record, text, removals);
  return text;
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
  return remembered(dictionaryNameSave(), key(), [&] {
    Text name = nameOf(*this);
    // An empty name counts as one: the company stands in only where there is none.
    if (!name) name = companyOf(*this);
    return name.value_or("");
  });
}

Text _ABPerson::nameChineesPinyin() const {
  return remembered(dictionaryPinyinSave(), key(),
                    [&] { return transformChinese(displayName()).value_or(""); });
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
