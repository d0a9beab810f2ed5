#include "ox/OxAddressBookSDK/general/book_writer.hpp"

#include <gtest/gtest.h>
#include <memory>
#include <string>

#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "ox/OxAddressBookSDK/values/OxMutableSingleValue.hpp"
#include "ox/base/failures.hpp"

namespace ox {
namespace {

std::shared_ptr<OxGeneralPerson> withNote(const std::string& identifier, Object note) {
  auto person = OxGeneralPerson::make(identifier);
  const auto value = OxMutableSingleValue::init();
  value->setValue(std::move(note));
  person->setValue_byPropertyName(value, OxProPertyNote);
  return person;
}

void add(BookWriter& writer, const std::shared_ptr<OxGeneralPerson>& person) {
  writer.add(*person->ID(), *person);
}

Date dateThatIsNone() {
  auto date = *Date::fromText("--05-17");
  date.utcOffsetMinutes = std::int16_t{60};
  return date;
}

TEST(BookWriter, PutsALaterRecordInThePlaceOfAnEarlierOne) {
  BookWriter writer;
  writer.add("g", *OxGeneralGroup::make("Friends", {}, {"p"}));
  writer.add("h", *OxGeneralGroup::make("Chess", {}, {}));
  writer.add("g", *OxGeneralGroup::make("Foes", {}, {"q"}));
  add(writer, withNote("p", "first"));
  add(writer, withNote("q", "other"));
  add(writer, withNote("p", "second"));
  const auto written = writer.finish();
  ASSERT_TRUE(written);
  const auto read = OxAddressBookGeneral::addressBookWithData(written);
  ASSERT_TRUE(read);
  std::string groups;
  for (const auto& [key, group] : read->groupsDic()) groups += key + "=" + *group->title() + " ";
  EXPECT_EQ(groups, "g=Foes h=Chess ");
  EXPECT_EQ(read->groupsDic().objectForKey("g")->persons(), OxGeneralGroup::Keys{"q"});
  std::string persons;
  for (const auto& [key, person] : read->personsDic()) persons += key + " ";
  EXPECT_EQ(persons, "p q ");
  EXPECT_EQ(*read->saveToData(), *written);
  EXPECT_NE(written->find("second"), std::string::npos);
  EXPECT_EQ(written->find("first"), std::string::npos);
}

TEST(BookWriter, ForgetsARefusedRecordThatAnotherOneReplaces) {
  const failures::Watch watch;
  BookWriter refused;
  add(refused, withNote("p", dateThatIsNone()));
  add(refused, withNote("q", "kept"));
  EXPECT_FALSE(refused.finish());
  EXPECT_EQ(watch.lastReason(),
            "the neutral book cannot be written: OxProPertyNote of p: a date that does not exist");
  BookWriter replaced;
  add(replaced, withNote("p", dateThatIsNone()));
  add(replaced, withNote("q", "kept"));
  add(replaced, withNote("p", "mended"));
  const auto general = OxAddressBookGeneral::init();
  general->addPerson(withNote("p", "mended"));
  general->addPerson(withNote("q", "kept"));
  EXPECT_EQ(*replaced.finish(), *general->saveToData());
  EXPECT_EQ(watch.counts().failures, 1U);
}

}  // namespace
}  // namespace ox
