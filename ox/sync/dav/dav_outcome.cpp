#include "ox/sync/dav/dav_outcome.hpp"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "ox/base/text/ascii_case.hpp"
#include "ox/sync/dav/wire/multistatus_request.hpp"
#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {

namespace {

using Outcome = Pushed::Outcome;

struct ConditionRow {
  std::string_view condition;  // local name within DAV:error
  Outcome outcome;
};

// These say more than the code that they come with.
constexpr std::array kConditions = {
    ConditionRow{"no-uid-conflict", Outcome::UidElsewhere},
    ConditionRow{"need-privileges", Outcome::ReadOnly},
    ConditionRow{"max-resource-size", Outcome::TooLarge},
    ConditionRow{"quota-not-exceeded", Outcome::TooLarge},
    ConditionRow{"sufficient-disk-space", Outcome::TooLarge},
    ConditionRow{"lock-token-submitted", Outcome::Locked},
    ConditionRow{"no-conflicting-lock", Outcome::Locked},
    ConditionRow{"valid-address-data", Outcome::Refused},
    ConditionRow{"supported-address-data", Outcome::Refused},
    ConditionRow{"valid-calendar-data", Outcome::Refused},  // one server says so of cards too
};

Outcome outcomeOfCode(Push::Kind kind, int code) {
  const bool isCreate = kind == Push::Kind::Create;
  switch (code) {
    case 404:
    case 410:
      return isCreate ? Outcome::Refused : Outcome::Gone;
    case 405:
      return kind == Push::Kind::Remove ? Outcome::Refused : Outcome::ReadOnly;
    case 412:
      return isCreate ? Outcome::Exists : Outcome::Changed;
    case 413:
    case 507:
      return Outcome::TooLarge;
    case 423:
      return Outcome::Locked;
    case 501:
      return Outcome::Refused;
    default:
      break;
  }
  if (code / 100 == 2) return Outcome::Done;
  return code / 100 == 5 ? Outcome::Unknown : Outcome::Refused;
}

// Servers that know no preconditions say it in words.
bool speaksOfUid(const std::string& body) {
  const auto text = lowerCase(body);
  return text.find("no-uid-conflict") != std::string::npos ||
         text.find("uid already exists") != std::string::npos;
}

Outcome outcomeOf(Push::Kind kind, int code, const DavRefusal& refusal) {
  for (const auto& row : kConditions) {
    if (refusal.names(row.condition)) return row.outcome;
  }
  return outcomeOfCode(kind, code);
}

// The real answer stands within (RFC 4918, section 9.6.1); the first one that says no counts.
Pushed pushedWithin(Push::Kind kind, const std::string& href, const HttpAnswer& answer) {
  Pushed pushed{.outcome = Outcome::Done, .href = href, .etag = {}, .code = 207, .reason = {}};
  bool isTold = false;
  for (const auto& response : responsesIn(answer)) {
    auto code = response.status;
    DavRefusal refusal{.conditions = {}, .said = response.said};
    for (const auto& name : response.errors) {
      refusal.conditions.push_back(name.substr(name.rfind('}') + 1));
    }
    for (const auto& property : response.properties) {
      if (code == 0 || code / 100 == 2) code = property.status == 0 ? code : property.status;
    }
    isTold = isTold || code != 0;
    if (code == 0 || code / 100 == 2) continue;
    pushed.code = code;
    pushed.outcome = outcomeOf(kind, code, refusal);
    pushed.reason = refusal.said;
    if (pushed.reason.empty() && !refusal.conditions.empty()) {
      pushed.reason = refusal.conditions.front();
    }
    return pushed;
  }
  if (!isTold) pushed.outcome = Outcome::Unknown;
  return pushed;
}

}  // namespace

Pushed pushedOf(Push::Kind kind, const std::string& href, const HttpAnswer& answer) {
  Pushed pushed{
      .outcome = Outcome::Done, .href = href, .etag = {}, .code = answer.status, .reason = {}};
  if (answer.status == 207) {
    try {
      return pushedWithin(kind, href, answer);
    } catch (const RemoteError& error) {
      pushed.outcome = Outcome::Unknown;
      pushed.reason = error.what();
      return pushed;
    }
  }
  if (answer.status / 100 == 2) {
    const auto* etag = answer.header("etag");
    const auto* location = answer.header("location");
    if (kind == Push::Kind::Remove) return pushed;
    if (etag) pushed.etag = *etag;
    if (location && !location->empty()) pushed.href = *location;
    return pushed;
  }
  const auto refusal = refusalOf(answer);
  pushed.outcome = outcomeOf(kind, answer.status, refusal);
  if (answer.status / 100 == 4 && speaksOfUid(answer.body)) {
    pushed.outcome = Outcome::UidElsewhere;
  }
  pushed.reason = refusal.said;
  return pushed;
}

}  // namespace ox::sync
