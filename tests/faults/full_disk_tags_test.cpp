// A disk that is full, or broken, at any one of the changes of an edit of tags.
#include <array>
#include <gtest/gtest.h>
#include <optional>

#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/OxAddressBookSDK/tags/tag_file.hpp"
#include "ox/base/failures.hpp"
#include "ox/base/private_file.hpp"
#include "ox/base/sqlite/error.hpp"
#include "ox/base/store_location.hpp"
#include "tests/faults/trouble.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::faults {
namespace {

using Tags = OxTagManager::Tags;

TEST(FullDisk, AtAnyWriteOfATagEditChangesNoTag) {
  const failures::Watch watch;
  FaultyDisk::shared();
  const auto manager = OxTagManager::tagManagerWithID("book");
  const std::string large(9'000, 'l');
  struct Row {
    void (*edit)(OxTagManager& manager, const std::string& large);
    Tags wanted;
  };
  const Tags before = {"work", "sailing"};
  const std::array rows = {
      Row{[](auto& tags, auto& tag) { tags.addPersonID_forTag("p", tag); },
          {"work", "sailing", large}},
      Row{[](auto& tags, auto&) { tags.removePersonID_fromTag("p", "work"); }, {"sailing"}},
      Row{[](auto& tags, auto& tag) {
            tags.setTags_forPersonID(Tags{tag, "work"}, "p");
          },
          {large, "work"}},
      Row{[](auto& tags, auto&) { tags.removeForPersonID("p"); }, {}},
  };
  int met = 0;
  for (const auto& row : rows) {
    met += forEachTrouble(Points::Each, [&](const Trouble& trouble) {
      manager->setTags_forPersonID(before, "p");
      const auto failed = watch.counts().failures;
      const bool struck = trouble.during([&] { row.edit(*manager, large); });
      EXPECT_EQ(watch.counts().failures, failed + (struck ? 1 : 0));
      if (struck) {
        EXPECT_EQ(manager->tagsByPersonID("p"), before);
        EXPECT_EQ(TagFile(tagStorePath()).tags("book", "p"), before);
        row.edit(*manager, large);
      }
      EXPECT_EQ(manager->tagsByPersonID("p").value_or(Tags()), row.wanted);
      EXPECT_EQ(OxTagManager::problems(), std::vector<std::string>());
      return struck;
    });
  }
  EXPECT_GT(met, 50);
}

TEST(FullDisk, AtAnyWriteThatMakesTagsDurableIsTold) {
  FaultyDisk::shared();
  const auto manager = OxTagManager::tagManagerWithID("book");
  const int met = forEachTrouble(Points::Each, [&](const Trouble& trouble) {
    manager->addPersonID_forTag("p", "work");
    bool durable = false;
    const bool struck = trouble.during([&] { durable = OxTagManager::makeDurable(); });
    EXPECT_EQ(durable, !struck);
    EXPECT_TRUE(OxTagManager::makeDurable());
    EXPECT_EQ(manager->tagsByPersonID("p"), Tags({"work"}));
    manager->removeForPersonID("p");
    return struck;
  });
  EXPECT_GT(met, 6);
}

TEST(FullDisk, WhileATagFileIsMadeLeavesAPlaceToMakeIt) {
  FaultyDisk::shared();
  int made = 0;
  const int met = forEachTrouble(Points::Each, [&](const Trouble& trouble) {
    const auto path = support::temporaryPath("tags" + std::to_string(made++)).string();
    createPrivateFile(path);
    bool failed = false;
    std::optional<TagFile> file;  // what closing it cannot write stays in its log
    const bool struck = trouble.during([&] {
      try {
        file.emplace(path).add("book", "p", "work");
      } catch (const sqlite::Error&) {
        failed = true;
      }
    });
    EXPECT_EQ(failed, struck);
    EXPECT_EQ(TagFile(path).tags("book", "p"), struck ? Tags() : Tags({"work"}));
    TagFile(path).add("book", "p", "sailing");
    EXPECT_EQ(TagFile(path).tags("book", "p"),
              struck ? Tags({"sailing"}) : Tags({"work", "sailing"}));
    EXPECT_EQ(TagFile(path).problems(), Tags());
    return struck;
  });
  EXPECT_GT(met, 50);
}

}  // namespace
}  // namespace ox::faults
