#include "ox/sync/logins.hpp"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "ox/platform/store/contact_source.hpp"

using namespace ox;

// A domain's address book may lie on another host, which the secret has to reach in each run too.
TEST(Logins, KeepTheOriginsThatDiscoveryLedTo) {
  sync::LoginSettings settings;
  settings.url = "ann@example.org";
  settings.user = "ann";
  sync::Offer offer;
  offer.homes = {"https://books.example:8443/ann/", "https://dav.example.org/team/"};
  sync::ChosenBook chosen;
  chosen.book.url = "https://books.example:8443/ann/private/";
  chosen.containerName = "Private";
  sync::addLogin("example", settings, offer, {chosen});
  const auto logins = syncSource().syncLogins();
  ASSERT_EQ(logins.size(), 1U);
  EXPECT_EQ(logins[0].origins, (std::vector<std::string>{"https://books.example:8443",
                                                         "https://dav.example.org:443"}));
}
