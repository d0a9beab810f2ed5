#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <vector>

#include "ox/OxMacAddressBookSDK/ground/service_types.hpp"
#include "ox/OxMacAddressBookSDK/version.hpp"
#include "ox/images/image_codec.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {
namespace {

TEST(BookFromContainer, TakesNameAndServiceFromTheContainer) {
  const struct {
    const char* containerName;
    std::int32_t containerType;
    const char* name;
    std::int32_t serverType;
  } rows[] = {
      {"QQ", 3, "QQ", 2},
      {"qq", 3, "QQ", 2},
      {"谷歌", 3, "Google", 1},
      {"GOOGLE", 3, "Google", 1},
      {"Google", 3, "Google", 1},
      {"Google Contacts", 3, "Google Contacts", 9},
      {"FACEBOOK", 3, "FaceBook", 3},
      {"yahoo", 3, "Yahoo", 4},
      {"LinkedIn", 3, "Linkedin", 5},
      {"AOL", 3, "Aol", 6},
      {"exchange", 3, "Exchange", 7},
      {"Exchange", 2, "Exchange", 9},
      {"icloud", 3, "iCloud", 8},
      {"iCloud", 2, "iCloud", 9},
      {"iCloud", 0, "iCloud", 9},
      {"iCloud", 1, "On My Mac", 0},
      {"", 3, "", 9},
      {"anything", 1, "On My Mac", 0},
  };
  for (const auto& row : rows) {
    const auto book = OxMacAddressBook::initWithContainer(
        containerOf("A:ABAccount", row.containerName, row.containerType));
    EXPECT_EQ(book->name(), Text(row.name)) << row.containerName;
    EXPECT_EQ(book->serverType(), row.serverType) << row.containerName;
    EXPECT_EQ(book->ID(), Text("A"));
    EXPECT_EQ(book->validContainerID(), Text("A:ABAccount"));
    EXPECT_EQ(book->tagManager(), OxTagManager::tagManagerWithID("A"));
    EXPECT_EQ(book->allPersonArray()->size(), 0U);
  }
}

TEST(BookFromContainer, AMissingContainerGivesABookWithoutIdentity) {
  const auto book = OxMacAddressBook::initWithContainer(nullptr);
  EXPECT_EQ(book->ID(), Text());
  EXPECT_EQ(book->name(), Text());
  EXPECT_EQ(book->serverType(), 9);
}

TEST(BookFromId, IsLocalOnlyForTheExactLocalId) {
  const struct {
    const char* identifier;
    std::int32_t serverType;
  } rows[] = {{"_local", 0}, {"_LOCAL", 9}, {"X:ABAccount", 9}, {"", 9}};
  for (const auto& row : rows) {
    const auto book = OxMacAddressBook::initWithID(row.identifier);
    EXPECT_EQ(book->ID(), Text(row.identifier));
    EXPECT_EQ(book->validContainerID(), Text(row.identifier));
    EXPECT_EQ(book->serverType(), row.serverType);
    EXPECT_EQ(book->name(), Text());
    EXPECT_EQ(book->allPersonArray(), nullptr);
    EXPECT_EQ(book->tagManager(), OxTagManager::tagManagerWithID(row.identifier));
  }
  EXPECT_EQ(OxMacAddressBook::initWithID(std::nullopt)->serverType(), 9);
}

TEST(Initialisers, RegisterTheCatchAllPropertyOnce) {
  EXPECT_EQ(ABPerson::typeOfProperty(OxMacOtherProperty), kABErrorInProperty);
  OxMacAddressBook::init();
  EXPECT_EQ(ABPerson::typeOfProperty(OxMacOtherProperty), 257);
  const auto known = ABPerson::properties();
  OxMacAddressBook::initWithID("_local");
  OxMacAddressBook::initWithContainer(containerOf("A", "A", 3));
  EXPECT_EQ(ABPerson::properties(), known);
}

// A book of that service, made as the container of its account makes it.
std::shared_ptr<OxMacAddressBook> bookOfService(std::int32_t type) {
  const char* names[] = {"",         "google", "QQ",       "facebook", "Yahoo",
                         "linkedin", "Aol",    "Exchange", "iCloud",   "any other"};
  auto book = OxMacAddressBook::initWithContainer(
      containerOf("X", names[type], type == 0 ? CNContainerTypeLocal : CNContainerTypeCardDAV));
  EXPECT_EQ(book->serverType(), type);
  return book;
}

TEST(Capabilities, DifferByServiceAndFlag) {
  for (std::int32_t type = 0; type <= 9; ++type) {
    const auto book = bookOfService(type);
    EXPECT_EQ(book->canCreateGroup(), type != 1 && type != 3) << type;
    EXPECT_EQ(book->canCreateSubGroup(), type == 0 || type >= 4) << type;
    EXPECT_EQ(book->canOprate(), type != 3) << type;
    EXPECT_FALSE(book->isInternetAdressBook()) << type;
  }
}

TEST(Artwork, IsNamedAfterTheService) {
  const char* stems[] = {"mac",      "google", "qq",       "facebook", "yahoo",
                         "linkedin", "aol",    "exchange", "icloud",   "other"};
  for (std::int32_t type = 0; type <= 9; ++type) {
    EXPECT_EQ(services::artworkStem(type), stems[type]);
  }
  EXPECT_EQ(services::artworkStem(10), "other");
  EXPECT_EQ(services::artworkStem(-1), "other");
}

// A picture that tells which file it came from.
void writeArtwork(const std::string& name, std::uint8_t shade) {
  const Image image(1, 1, {shade, shade, shade, 255});
  support::temporaryFile(name, *images::encodeTiff(image));
}

int shadeOf(const ImagePtr& image) {
  return image ? image->pixels().at(0) : -1;
}

TEST(Artwork, IsReadFromItsFileAtEveryCall) {
  ::setenv("OX_RESOURCES", support::StoreEnvironment::instance().folder().c_str(), 1);
  const auto book = OxMacAddressBook::init();
  // No service of ours is named so: nothing that is installed can be found in its place.
  EXPECT_EQ(book->loadImageWithName_type("test artwork", "png"), nullptr);
  writeArtwork("test artwork.png", 1);
  EXPECT_EQ(shadeOf(book->loadImageWithName_type("test artwork", "png")), 1);
  writeArtwork("test artwork.png", 2);
  EXPECT_EQ(shadeOf(book->loadImageWithName_type("test artwork", "png")), 2);
  EXPECT_EQ(book->loadImageWithName_type("test artwork", "jpg"), nullptr);
  EXPECT_EQ(book->loadImageWithName_type(std::nullopt, "png"), nullptr);
}

TEST(Artwork, OfEachServiceHasItsSizesAndAPictureOfItsOwn) {
  constexpr std::uint32_t kSizes[] = {32, 64, 128, 256, 512};
  const auto picturesOf = [](const OxMacAddressBook& book) {
    return std::array{book.thumbnail(), book.logo1(), book.logo2(), book.logo3(), book.logo4()};
  };
  std::vector<std::array<ImagePtr, 5>> met;
  for (std::int32_t type = 0; type <= 9; ++type) {
    const auto book = bookOfService(type);
    met.push_back(picturesOf(*book));
    for (std::size_t i = 0; i < met.back().size(); ++i) {
      const auto& picture = met.back().at(i);
      ASSERT_TRUE(picture) << type << ' ' << i;
      EXPECT_EQ(picture->width, kSizes[i]) << type;
      EXPECT_EQ(picture->height, kSizes[i]) << type;
      for (std::size_t other = 0; other + 1 < met.size(); ++other) {
        EXPECT_NE(*picture, *met[other].at(i)) << type << ' ' << other;
      }
    }
  }
  const auto local = OxMacAddressBook::initWithID("_local");
  const auto another = OxMacAddressBook::initWithID("_LOCAL");
  for (std::size_t i = 0; i < std::size(kSizes); ++i) {
    EXPECT_EQ(*picturesOf(*local).at(i), *met.front().at(i));
    EXPECT_EQ(*picturesOf(*another).at(i), *met.back().at(i));
  }
  EXPECT_EQ(*local->loadImageWithName_type("pic_mac_logo2", "png"), *local->logo2());
  EXPECT_EQ(local->loadImageWithName_type("no such", "png"), nullptr);
}

TEST(Constants, AreTheTextsThatHostsRelyOn) {
  EXPECT_EQ(OxMacAddressBookID, "_local");
  EXPECT_EQ(OxMacAddressBookTagsID, "mac_addressbookTagsID");
  EXPECT_EQ(OxAddressBookQQName, "QQ");
  EXPECT_EQ(OxAddressGoogleName, "Google");
  EXPECT_EQ(OxAddressFaceBookName, "FaceBook");
  EXPECT_EQ(OxAddressYahooName, "Yahoo");
  EXPECT_EQ(OxAddressLinkedinName, "Linkedin");
  EXPECT_EQ(OxAddressAolName, "Aol");
  EXPECT_EQ(OxAddressExchangeName, "Exchange");
  EXPECT_EQ(OxAddressICloudName, "iCloud");
  EXPECT_EQ(OxAddressOtherName, "Other");
  EXPECT_EQ(OxMacAddressBookSDKVersionNumber, 1.0);
  EXPECT_EQ(std::string(OxMacAddressBookSDKVersionString),
            "@(#)PROGRAM:OxMacAddressBookSDK  PROJECT:OxMacAddressBookSDK-1\n");
}

}  // namespace
}  // namespace ox::test
