#include "ox/sync/dav/service_records.hpp"

#include <algorithm>
#include <arpa/nameser.h>
#include <array>
#include <cstddef>
#include <netinet/in.h>
#include <resolv.h>
#include <string_view>
#include <utility>

#include "ox/base/text/ascii_case.hpp"

namespace ox::sync {

namespace {

struct RankedTarget {
  int priority = 0;
  int weight = 0;
  ServiceRecords::Target target;
};

int numberAt(const unsigned char* at) {
  return at[0] * 256 + at[1];
}

// RFC 2782: priority, weight, port, name. The root as a name says that there is no such service.
void addTarget(const ns_msg& message, const ns_rr& record, std::vector<RankedTarget>& targets) {
  if (ns_rr_rdlen(record) < 7) return;
  const auto* data = ns_rr_rdata(record);
  std::array<char, NS_MAXDNAME> name{};
  if (ns_name_uncompress(ns_msg_base(message), ns_msg_end(message), data + 6, name.data(),
                         name.size()) < 0) {
    return;
  }
  auto host = lowerCase(name.data());
  while (host.ends_with('.')) host.pop_back();
  const auto port = numberAt(data + 4);
  const bool isHost =
      host.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-._") == std::string::npos;
  if (host.empty() || !isHost || port == 0) return;
  targets.push_back({.priority = numberAt(data),
                     .weight = numberAt(data + 2),
                     .target = {.host = std::move(host), .port = port}});
}

// RFC 6763, section 6: strings of a length byte each.
void addPath(const ns_rr& record, std::string& path) {
  std::string_view data(reinterpret_cast<const char*>(ns_rr_rdata(record)), ns_rr_rdlen(record));
  while (!data.empty()) {
    const auto length = static_cast<std::size_t>(static_cast<unsigned char>(data.front()));
    const auto text = data.substr(1, length);
    if (lowerCase(text.substr(0, 5)) == "path=" && text.substr(5).starts_with('/')) {
      path = text.substr(5);
    }
    data.remove_prefix(std::min(data.size(), length + 1));
  }
}

std::vector<std::uint8_t> answerOf(const std::string& name, ns_type type) {
  struct __res_state state {};
  if (res_ninit(&state) != 0) return {};
  std::vector<std::uint8_t> answer(std::size_t{64} << 10);
  const auto length = res_nquery(&state, name.c_str(), ns_c_in, type, answer.data(),
                                 static_cast<int>(answer.size()));
  res_nclose(&state);
  answer.resize(length < 0 ? 0 : std::min(answer.size(), static_cast<std::size_t>(length)));
  return answer;
}

}  // namespace

ServiceRecords serviceRecordsIn(std::span<const std::uint8_t> message) {
  ServiceRecords records;
  ns_msg parsed{};
  if (ns_initparse(message.data(), static_cast<int>(message.size()), &parsed) < 0) return records;
  std::vector<RankedTarget> targets;
  for (int at = 0; at < ns_msg_count(parsed, ns_s_an); ++at) {
    ns_rr record{};
    if (ns_parserr(&parsed, ns_s_an, at, &record) < 0) break;
    if (ns_rr_type(record) == ns_t_srv) addTarget(parsed, record, targets);
    if (ns_rr_type(record) == ns_t_txt) addPath(record, records.path);
  }
  // Among those of one priority the heavier one first: there is one client here, not a crowd to be
  // spread.
  std::ranges::stable_sort(targets, [](const RankedTarget& left, const RankedTarget& right) {
    return std::pair(left.priority, -left.weight) < std::pair(right.priority, -right.weight);
  });
  for (auto& each : targets) records.targets.push_back(std::move(each.target));
  return records;
}

ServiceRecords serviceRecords(const std::string& service, const std::string& domain) {
  const auto name = service + "." + domain;
  auto records = serviceRecordsIn(answerOf(name, ns_t_srv));
  if (!records.targets.empty()) records.path = serviceRecordsIn(answerOf(name, ns_t_txt)).path;
  return records;
}

}  // namespace ox::sync
