// Whole runs over real folders, as hosts ask for them.

#include "ox/sync/synchronise.hpp"

#include <filesystem>
#include <gtest/gtest.h>

#include "ox/platform/store/contact_source.hpp"
#include "ox/sync/logins.hpp"
#include "tests/support/store_environment.hpp"
#include "tests/sync/run/synced_book.hpp"

namespace ox::test {
namespace {

using sync::BookReport;

// One login that leads to two folders, with a person in each.
class TwoFolders : public testing::Test {
 protected:
  TwoFolders() {
    for (const auto* name : {"x", "y"}) std::filesystem::create_directories(folder() / name);
    support::temporaryFile("books/x/ann.vcf", cardText("ann", "Ann", "Lee"));
    support::temporaryFile("books/y/bob.vcf", cardText("bob", "Bob", "Ray"));
    sync::LoginSettings settings;
    settings.kind = sync::LoginSettings::Kind::Folder;
    settings.url = folder().string();
    const auto offer = sync::offerOf(settings, {});
    std::vector<sync::ChosenBook> books;
    for (const auto& book : offer.books) books.push_back({book, {}, book.name});
    for (const auto& book : sync::addLogin("Both", settings, offer, books)) {
      containers.push_back(book.container);
    }
  }

  static std::filesystem::path folder() { return support::temporaryPath("books"); }

  static void run(BookReport::State state = BookReport::State::InStep) {
    const auto reports = sync::synchronise({});
    ASSERT_EQ(reports.size(), 2U);
    for (const auto& report : reports) EXPECT_EQ(report.state, state) << report.failure;
  }

  static RecordKeys personsOf(const std::string& container) {
    return containerSource().recordsIn(container, RecordKind::Person);
  }

  std::vector<std::string> containers;
};

TEST_F(TwoFolders, AreBroughtInStepTogether) {
  run();
  EXPECT_EQ(personsOf(containers.at(0)).size(), 1U);
  EXPECT_EQ(personsOf(containers.at(1)).size(), 1U);
  EXPECT_EQ(sync::knownBooks().size(), 2U);
}

TEST_F(TwoFolders, HaveACardThatMovesInTheNewPlaceBeforeItGoesFromTheOld) {
  run();
  const auto ann = personsOf(containers.at(0)).at(0);
  SaveRequest request;
  NewRecord moved;
  moved.key = RecordKey::make(RecordKind::Person);
  moved.container = containers.at(1);
  moved.properties = *containerSource().committedValues(ann);
  request.additions.push_back(moved);
  request.removals.push_back({ann});
  ASSERT_TRUE(containerSource().execute(request)) << request.reason;
  // The new place takes nothing: the old one keeps the card.
  const auto other = folder() / "elsewhere";
  std::filesystem::rename(folder() / "y", other);
  const auto broken = sync::synchronise({});
  EXPECT_EQ(broken.at(0).state, BookReport::State::InStep);
  EXPECT_EQ(broken.at(1).state, BookReport::State::Failed);
  EXPECT_TRUE(std::filesystem::exists(folder() / "x" / "ann.vcf"));
  EXPECT_TRUE(sync::knownBooks().at(1).isAway);
  std::filesystem::rename(other, folder() / "y");
  run();
  EXPECT_FALSE(std::filesystem::exists(folder() / "x" / "ann.vcf"));
  EXPECT_TRUE(std::filesystem::exists(folder() / "y" / "ann.vcf"));
  EXPECT_FALSE(sync::knownBooks().at(1).isAway);
}

TEST_F(TwoFolders, GoOnWhereOneOfThemIsAway) {
  run();
  std::filesystem::rename(folder() / "x", folder() / "away");
  support::temporaryFile("books/y/cy.vcf", cardText("cy", "Cy", "Doe"));
  const auto reports = sync::synchronise({});
  EXPECT_EQ(reports.at(0).state, BookReport::State::Failed);
  EXPECT_EQ(reports.at(0).kind, sync::RemoteFailure::Away);
  EXPECT_EQ(reports.at(1).state, BookReport::State::InStep);
  EXPECT_EQ(personsOf(containers.at(0)).size(), 1U);
  EXPECT_EQ(personsOf(containers.at(1)).size(), 2U);
}

}  // namespace
}  // namespace ox::test
