#include "ox/sync/http/private_host.hpp"

#include <gtest/gtest.h>

namespace ox::sync {
namespace {

TEST(PrivateHost, IsToldByItsAddress) {
  for (const auto* host :
       {"127.0.0.1", "127.9.9.9", "10.1.2.3", "172.16.0.1", "172.31.255.255", "192.168.1.1",
        "169.254.169.254", "100.64.0.1", "0.0.0.0", "[::1]", "[::]", "[fe80::1]", "[fd00::1]",
        "[::ffff:10.0.0.1]", "localhost", "cards.localhost"}) {
    EXPECT_TRUE(isPrivateHost(host)) << host;
  }
}

TEST(PrivateHost, IsNoneOfAllOthers) {
  for (const auto* host : {"8.8.8.8", "172.32.0.1", "172.15.255.255", "192.169.0.1", "100.128.0.1",
                           "11.0.0.1", "[2001:db8::1]", "[::ffff:8.8.8.8]", "nobody.invalid"}) {
    EXPECT_FALSE(isPrivateHost(host)) << host;
  }
}

}  // namespace
}  // namespace ox::sync
