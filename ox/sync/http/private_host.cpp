#include "ox/sync/http/private_host.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace ox::sync {
namespace {

struct Block {
  std::uint32_t first;
  int bits;
};

// RFC 1122, 1918, 3927 and 6598.
constexpr std::array kPrivateBlocks = {
    Block{0x00000000, 8},  Block{0x0A000000, 8},  Block{0x64400000, 10}, Block{0x7F000000, 8},
    Block{0xA9FE0000, 16}, Block{0xAC100000, 12}, Block{0xC0A80000, 16},
};

bool isPrivate(std::uint32_t address) {
  return std::any_of(kPrivateBlocks.begin(), kPrivateBlocks.end(), [&](const Block& block) {
    return ((address ^ block.first) >> (32 - block.bits)) == 0;
  });
}

// RFC 4193 and 4291; an IPv4 address within counts as itself.
bool isPrivate(const in6_addr& address) {
  if (IN6_IS_ADDR_V4MAPPED(&address) != 0) {
    std::uint32_t inner = 0;
    std::memcpy(&inner, &address.s6_addr[12], sizeof inner);
    return isPrivate(ntohl(inner));
  }
  return IN6_IS_ADDR_LOOPBACK(&address) != 0 || IN6_IS_ADDR_UNSPECIFIED(&address) != 0 ||
         IN6_IS_ADDR_LINKLOCAL(&address) != 0 || (address.s6_addr[0] & 0xFEU) == 0xFCU;
}

bool isPrivate(const sockaddr* address) {
  if (address->sa_family == AF_INET) {
    sockaddr_in inner{};
    std::memcpy(&inner, address, sizeof inner);
    return isPrivate(ntohl(inner.sin_addr.s_addr));
  }
  if (address->sa_family != AF_INET6) return false;
  sockaddr_in6 inner{};
  std::memcpy(&inner, address, sizeof inner);
  return isPrivate(inner.sin6_addr);
}

struct Freed {
  void operator()(addrinfo* list) const { ::freeaddrinfo(list); }
};

}  // namespace

bool isPrivateHost(const std::string& host) {
  auto name = host;
  if (name.size() > 2 && name.front() == '[') name = name.substr(1, name.size() - 2);
  if (name == "localhost" || name.ends_with(".localhost")) return true;
  addrinfo wanted{};
  wanted.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (::getaddrinfo(name.c_str(), nullptr, &wanted, &found) != 0) return false;
  const std::unique_ptr<addrinfo, Freed> list(found);
  for (const auto* entry = found; entry != nullptr; entry = entry->ai_next) {
    if (isPrivate(entry->ai_addr)) return true;
  }
  return false;
}

}  // namespace ox::sync
