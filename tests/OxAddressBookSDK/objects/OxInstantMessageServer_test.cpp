#include "ox/OxAddressBookSDK/objects/OxInstantMessageServer.hpp"

#include <gtest/gtest.h>

namespace ox {
namespace {

TEST(OxInstantMessageServer, IsTheSameObjectForACommonService) {
  for (const auto* name : {"AIM", "Facebook", "GaduGadu", "GoogleTalk", "ICQ", "Jabber", "MSN",
                           "QQ", "Skype", "Yahoo"}) {
    const auto server = OxInstantMessageServer::serverWithName(name);
    ASSERT_TRUE(server) << name;
    EXPECT_EQ(server->name(), name);
    EXPECT_EQ(OxInstantMessageServer::serverWithName(name), server);
  }
}

TEST(OxInstantMessageServer, KeepsAnUnknownNameAsItStands) {
  EXPECT_EQ(OxInstantMessageServer::serverWithName("jabber")->name(), "jabber");
  EXPECT_EQ(OxInstantMessageServer::serverWithName("Our Own")->name(), "Our Own");
  EXPECT_EQ(OxInstantMessageServer::serverWithName("")->name(), "");
}

TEST(OxInstantMessageServer, IsMissingForAMissingName) {
  EXPECT_EQ(OxInstantMessageServer::serverWithName(nullptr), nullptr);
  EXPECT_EQ(OxInstantMessageServer::serverWithName(Text()), nullptr);
}

}  // namespace
}  // namespace ox
