#include <utility>

#include "ox/base/text/utf8.hpp"
#include "ox/records/property_keys.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/uri.hpp"
#include "ox/vcard/properties/dictionary_texts.hpp"
#include "ox/vcard/properties/each_property.hpp"

// X-SOCIALPROFILE: the service is its TYPE, user and identifier are parameters, the URL is its
// value. SOCIALPROFILE has parameters for the service and the user, or the user as its value.

namespace ox::vcard {
namespace {

enum SocialKey : std::size_t { kService, kUser, kUrl, kUserIdentifier };
constexpr std::array kKeys = {kABSocialProfileServiceKey, kABSocialProfileUsernameKey,
                              kABSocialProfileURLKey, kABSocialProfileUserIdentifierKey};

// The scheme that stands for a profile without URL; the user's name follows.
constexpr std::string_view kNoUrl = "X-APPLE:";

bool isTypeWord(std::string_view word) {
  if (!isPlain(word) || word.find_first_of(",\"") != word.npos) return false;
  if (word.front() == ' ' || word.back() == ' ' || word.find('\n') != word.npos) return false;
  TypeWords words;
  ContentLine line;
  line.parameters.push_back({"TYPE", word, ParameterKind::Type});
  readTypeWords(line, words);
  return words.unknown.size() == 1;
}

std::string parameterIn(const ContentLine& line, ParameterKind kind) {
  const auto* parameter = line.find(kind);
  return parameter != nullptr ? parameterText(*parameter) : std::string();
}

// What preserved TYPE words do to the service, which is the first of a line's words.
struct PreservedService {
  bool isThere = false;     // they start with it
  bool isInTheWay = false;  // they start with another word
};

PreservedService preservedService(const std::string& parameters, std::string_view service) {
  if (parameters.empty()) return {};
  const PreservedTypeWords preserved(parameters);
  const auto& words = preserved.words().unknown;
  const bool isThere = words.size() > 1 && words.front() == service;
  return {isThere, !isThere && !words.empty()};
}

}  // namespace

bool readSocialProfile(const PropertyRow& row, const ContentLine& line, CardDraft& draft) {
  auto url = draft.text(line);
  readTypeWords(line, draft.types);
  const auto& words = draft.types.unknown;
  // Of several words the first is the service, and all are preserved.
  const auto unknownWords = words.size() <= 1 ? UnknownWords::AreUsed : UnknownWords::ArePreserved;
  auto user = parameterIn(line, ParameterKind::UserName);
  auto identifier = parameterIn(line, ParameterKind::UserIdentifier);
  if (startsWithWord(url, kNoUrl)) {
    if (user.empty()) {
      user = validUtf8(percentDecoded(std::string_view(url).substr(kNoUrl.size())));
    }
    url.clear();
  }
  Dictionary profile;
  const auto put = [&](SocialKey key, std::string value) {
    if (!value.empty()) profile.set(kKeys[key], std::move(value));
  };
  put(kService, std::string(words.empty() ? std::string_view() : words.front()));
  put(kUser, std::move(user));
  put(kUrl, std::move(url));
  put(kUserIdentifier, std::move(identifier));
  if (profile.empty()) return true;
  draft.addEntry(row.property, std::move(profile), line,
                 {.ownKinds = bitOf(ParameterKind::UserName) | bitOf(ParameterKind::UserIdentifier),
                  .unknownWords = unknownWords});
  return true;
}

// RFC 9554, section 3.5. Its TYPE names no service, and would be taken for one where we write it.
bool readStandardProfile(const PropertyRow& row, const ContentLine& line, CardDraft& draft) {
  auto value = draft.text(line);
  if (trimmed(value).empty()) return true;
  const auto* type = line.find(ParameterKind::Value);
  const bool isUser = type != nullptr && isWord(type->value, "TEXT");
  auto user = isUser ? value : parameterIn(line, ParameterKind::UserName);
  Dictionary profile;
  const auto put = [&](SocialKey key, std::string text) {
    if (!text.empty()) profile.set(kKeys[key], std::move(text));
  };
  put(kService, parameterIn(line, ParameterKind::ServiceType));
  put(kUser, std::move(user));
  put(kUrl, isUser ? std::string() : std::move(value));
  put(kUserIdentifier, parameterIn(line, ParameterKind::UserIdentifier));
  draft.addEntry(row.property, std::move(profile), line,
                 {.ownKinds = bitOf(ParameterKind::UserName) | bitOf(ParameterKind::ServiceType) |
                              bitOf(ParameterKind::UserIdentifier),
                  .unknownWords = UnknownWords::AreUsed});
  return true;
}

bool writeSocialProfile(EntryWriter& entry) {
  const auto* dictionary = entry.value().dictionary();
  if (dictionary == nullptr || dictionary->empty()) return false;
  const DictionaryTexts<kKeys.size()> texts(*dictionary, kKeys);
  const auto service = texts[kService];
  const auto user = texts[kUser];
  const CardText urlText(texts[kUrl]);  // as it would stand in the line
  const bool isUrl = !startsWithWord(urlText.view(), kNoUrl);
  const auto url = isUrl ? urlText.view() : std::string_view();
  const CardText identifier(texts[kUserIdentifier]);
  const bool isNamed = isTypeWord(service);
  if (!isNamed && user.empty() && identifier.view().empty() && url.empty()) return false;
  entry.start("X-SOCIALPROFILE");
  const auto preserved = preservedService(entry.parameters(), service);
  if (isNamed && !preserved.isThere) {
    const bool isQuoted = service.find_first_of(":;= \t") != service.npos;
    entry.line().raw(isQuoted ? ";TYPE=\"" : ";TYPE=").raw(service).raw(isQuoted ? "\"" : "");
  }
  const CardText userText(user);
  if (!userText.view().empty()) entry.line().parameter("X-USER", userText.view());
  if (!identifier.view().empty()) entry.line().parameter("X-USERID", identifier.view());
  entry.line().raw(":");
  if (url.empty()) {
    entry.line().raw("x-apple:").percent(user);
  } else {
    entry.line().uri(url);
  }
  entry.end();
  return texts.isExact() && texts.arePlain() && isUrl && (isNamed || service.empty()) &&
         !preserved.isInTheWay;
}

}  // namespace ox::vcard
