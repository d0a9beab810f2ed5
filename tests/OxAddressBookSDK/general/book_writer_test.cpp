#include "ox/OxAddressBookSDK/general/book_writer.hpp"

#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "ox/OxAddressBookSDK/values/OxMutableSingleValue.hpp"
#include "ox/base/failures.hpp"
#include "ox/images/image_codec.hpp"
#include "tests/OxAddressBookSDK/general/loose_group.hpp"

namespace ox {
namespace {

// Takes the pieces, and refuses after so many.
class Pieces final : public BookSink {
 public:
  explicit Pieces(std::size_t most = 1000) : most_(most) {}

  void append(std::string_view bytes) override {
    if (pieces_.size() == most_) throw std::runtime_error("no room");
    pieces_.emplace_back(bytes);
  }
  void replaceStart(std::string_view bytes) override {
    ASSERT_EQ(pieces_.front().size(), bytes.size());
    pieces_.front() = bytes;
  }
  std::size_t count() const { return pieces_.size(); }
  std::string file() const {
    std::string file;
    for (const auto& piece : pieces_) file += piece;
    return file;
  }

 private:
  std::size_t most_;
  std::vector<std::string> pieces_;
};

std::shared_ptr<OxGeneralPerson> withNote(const std::string& identifier, Object note) {
  auto person = OxGeneralPerson::make(identifier);
  const auto value = OxMutableSingleValue::init();
  value->setValue(std::move(note));
  person->setValue_byPropertyName(value, OxProPertyNote);
  return person;
}

Date dateThatIsNone() {
  auto date = *Date::fromText("--05-17");
  date.utcOffsetMinutes = std::int16_t{60};
  return date;
}

// A small picture that came from a file.
ImagePtr pictureOfTiff() {
  const Image image(16, 16, Pixels(1024, 255));
  return images::pictureOfFile(images::encodeTiff(image));
}

TEST(BookWriter, WritesWhatAWholeBookIsSavedAs) {
  const auto group = std::make_shared<LooseGroup>("g", "Friends");
  for (const bool withPicture : {false, true}) {
    const auto general = OxAddressBookGeneral::init();
    Pieces pieces;
    BookWriter writer(pieces);
    general->addGroup(group);
    writer.addGroup(group);
    for (int i = 0; i < 20; ++i) {
      const auto person = withNote("p" + std::to_string(i), std::string(100'000, 'n'));
      if (withPicture && i == 19) person->setThumbnail(pictureOfTiff());
      general->addPerson(person);
      writer.addPerson(person);
      EXPECT_LE(pieces.count(), 1U + static_cast<std::size_t>(i) / 2);
    }
    EXPECT_TRUE(writer.finish());
    EXPECT_GE(pieces.count(), 6U) << "it comes in pieces";
    EXPECT_EQ(pieces.file(), *general->saveToData());
    EXPECT_TRUE(pieces.file().starts_with(
        withPicture ? "{\"format\":\"OxAddressBookGeneral\",\"version\":2}\n"
                    : "{\"format\":\"OxAddressBookGeneral\",\"version\":1}\n"));
  }
}

TEST(BookWriter, TellsAtTheEndWhatCouldNotBeWritten) {
  const failures::Watch watch;
  Pieces pieces;
  BookWriter writer(pieces);
  writer.addPerson(withNote("p", dateThatIsNone()));
  writer.addPerson(withNote("q", std::string(1'000'000, 'n')));
  EXPECT_FALSE(writer.finish());
  EXPECT_EQ(pieces.count(), 0U);
  EXPECT_EQ(watch.counts().failures, 1U);
  EXPECT_EQ(watch.lastReason(),
            "the neutral book cannot be written: OxProPertyNote of p: a date that does not exist");
}

TEST(BookWriter, TellsAtTheEndThatItsSinkIsFull) {
  Pieces pieces(3);
  BookWriter writer(pieces);
  for (int i = 0; i < 5; ++i) {
    writer.addPerson(withNote("p" + std::to_string(i), std::string(1'000'000, 'n')));
  }
  EXPECT_EQ(pieces.count(), 3U);
  EXPECT_THROW(writer.finish(), std::runtime_error);
}

}  // namespace
}  // namespace ox
