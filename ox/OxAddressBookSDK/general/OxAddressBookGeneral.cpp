#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"

#include "ox/OxAddressBookSDK/general/book_writer.hpp"
#include "ox/base/text/utf8.hpp"

namespace ox {

void OxAddressBookGeneral::addGroup(const std::shared_ptr<IOxGroup>& group) {
  auto identifier = group ? group->ID() : std::nullopt;
  if (!identifier) return;
  groups_.set(validUtf8(*std::move(identifier)), OxGeneralGroup::copyOf(*group));
}

void OxAddressBookGeneral::addPerson(const std::shared_ptr<IOxPerson>& person) {
  if (!person) return;
  auto copy = OxGeneralPerson::copyOf(*person);
  if (const auto identifier = copy->ID()) persons_.set(*identifier, std::move(copy));
}

Data OxAddressBookGeneral::saveToData() const {
  BookData data;
  BookWriter writer(data);
  for (const auto& [key, group] : groups_) writer.add(key, *group);
  for (const auto& [key, person] : persons_) writer.add(key, *person);
  return writer.finish() ? data.take() : nullptr;
}

}  // namespace ox
