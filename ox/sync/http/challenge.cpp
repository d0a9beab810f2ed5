#include "ox/sync/http/challenge.hpp"

#include <algorithm>
#include <array>

#include "ox/base/text/ascii_case.hpp"

namespace ox::sync {
namespace {

struct NameRow {
  Scheme scheme;
  std::string_view name;
};

constexpr std::array kNames = {
    NameRow{Scheme::Basic, "basic"},
    NameRow{Scheme::Digest, "digest"},
    NameRow{Scheme::Bearer, "bearer"},
};

constexpr std::array<std::string_view, 4> kDigests = {"md5", "md5-sess", "sha-256", "sha-256-sess"};

// One challenge: its scheme and its parameters, names and schemes in lower case.
struct Challenge {
  std::string scheme;
  std::vector<std::pair<std::string, std::string>> parameters;

  std::string parameter(std::string_view name) const {
    for (const auto& [key, value] : parameters) {
      if (key == name) return value;
    }
    return {};
  }
};

std::string_view trimmed(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

std::string unquoted(std::string_view text) {
  if (text.size() < 2 || text.front() != '"' || text.back() != '"') return std::string(text);
  return std::string(text.substr(1, text.size() - 2));
}

// Parted at commas that stand outside of quotes.
std::vector<std::string_view> parts(std::string_view text) {
  std::vector<std::string_view> list;
  bool isQuoted = false;
  std::size_t start = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (isQuoted && text[at] == '\\') {
      ++at;
    } else if (text[at] == '"') {
      isQuoted = !isQuoted;
    } else if (text[at] == ',' && !isQuoted) {
      list.push_back(trimmed(text.substr(start, at - start)));
      start = at + 1;
    }
  }
  list.push_back(trimmed(text.substr(start)));
  return list;
}

void readParameter(std::string_view text, Challenge& challenge) {
  const auto equals = text.find('=');
  if (equals == std::string_view::npos) return;
  challenge.parameters.emplace_back(lowerCase(trimmed(text.substr(0, equals))),
                                    unquoted(trimmed(text.substr(equals + 1))));
}

void readChallenges(std::string_view header, std::vector<Challenge>& list) {
  for (auto part : parts(header)) {
    const auto wordEnd = part.find_first_of(" \t=");
    const bool isParameter =
        wordEnd != std::string_view::npos && trimmed(part.substr(wordEnd)).starts_with('=');
    if (!isParameter && !part.empty()) {
      list.push_back({lowerCase(part.substr(0, wordEnd)), {}});
      part = wordEnd == std::string_view::npos ? std::string_view() : part.substr(wordEnd);
    }
    if (!list.empty()) readParameter(trimmed(part), list.back());
  }
}

bool contains(const std::vector<std::string_view>& list, std::string_view word) {
  return std::find(list.begin(), list.end(), word) != list.end();
}

// libcurl takes the first of several and knows no protection of the body.
bool canBeComputed(const Challenge& digest) {
  const auto algorithm = lowerCase(digest.parameter("algorithm"));
  const auto protection = lowerCase(digest.parameter("qop"));
  return !digest.parameter("nonce").empty() &&
         (algorithm.empty() ||
          std::find(kDigests.begin(), kDigests.end(), algorithm) != kDigests.end()) &&
         (protection.empty() || contains(parts(protection), "auth"));
}

}  // namespace

std::string nameOf(Scheme scheme) {
  for (const auto& row : kNames) {
    if (row.scheme == scheme) return std::string(row.name);
  }
  return {};
}

Scheme schemeNamed(const std::string& name) {
  for (const auto& row : kNames) {
    if (row.name == name) return row.scheme;
  }
  return Scheme::Unknown;
}

std::optional<Scheme> schemeAskedFor(
    const std::vector<std::pair<std::string, std::string>>& headers) {
  std::vector<Challenge> challenges;
  for (const auto& [name, value] : headers) {
    if (name == "www-authenticate") readChallenges(value, challenges);
  }
  if (challenges.empty()) return Scheme::Basic;
  const auto of = [&](std::string_view scheme) {
    return std::find_if(challenges.begin(), challenges.end(),
                        [&](const Challenge& challenge) { return challenge.scheme == scheme; });
  };
  const auto digest = of("digest");
  if (digest != challenges.end() && canBeComputed(*digest)) return Scheme::Digest;
  if (of("basic") != challenges.end()) return Scheme::Basic;
  return {};
}

}  // namespace ox::sync
