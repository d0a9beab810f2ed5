// The name of a Card object (RFC 9553, section 2.2.1; RFC 9555, section 2.5).
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "ox/base/text/script.hpp"
#include "ox/formats/json/contact_rows.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/structured_value.hpp"

namespace ox::formats {
namespace {

using vcard::ContentLine;

// The components of N: RFC 6350, section 6.2.2, and RFC 9554, section 2.2.
struct ComponentRow {
  std::string_view kind;
  std::string_view reading;  // the line that says how it is read
};
constexpr std::array kComponents = {
    ComponentRow{"surname", "X-PHONETIC-LAST-NAME"},
    ComponentRow{"given", "X-PHONETIC-FIRST-NAME"},
    ComponentRow{"given2", "X-PHONETIC-MIDDLE-NAME"},
    ComponentRow{"title", {}},
    ComponentRow{"credential", {}},
    ComponentRow{"surname2", {}},
    ComponentRow{"generation", {}},
};
constexpr std::size_t kSurname = 0;
constexpr std::size_t kSurname2 = 5;

using Parts = std::array<std::vector<std::string>, kComponents.size()>;

Parts partsOfName(std::string_view value) {
  Parts parts;
  const auto components = vcard::partsOf(value, ';');
  for (std::size_t i = 0; i < components.size() && i < parts.size(); ++i) {
    for (const auto part : vcard::partsOf(components[i], ',')) {
      if (!part.empty()) parts[i].push_back(textOf(part));
    }
  }
  // A second surname stands among the first ones too, for readers who know no second.
  for (const auto& second : parts[kSurname2]) std::erase(parts[kSurname], second);
  return parts;
}

std::string readingOf(const ContactLines& card, std::size_t component) {
  const auto name = kComponents[component].reading;
  const auto* line = name.empty() ? nullptr : card.placed(name);
  return line != nullptr ? textOf(line->value) : std::string();
}

void writeComponents(const ContactLines& card, const Parts& parts, JsonWriter& out) {
  std::string readings;
  out.writeName("components");
  out.beginArray();
  for (std::size_t i = 0; i < parts.size(); ++i) {
    for (std::size_t k = 0; k < parts[i].size(); ++k) {
      out.beginObject();
      out.writeMember("kind", kComponents[i].kind);
      out.writeMember("value", parts[i][k]);
      const auto reading = k == 0 ? readingOf(card, i) : std::string();
      if (!reading.empty()) out.writeMember("phonetic", reading);
      readings += reading;
      out.endObject();
    }
  }
  out.endArray();
  out.writeName("isOrdered");
  out.writeBoolean(false);
  if (!readings.empty()) out.writeMember("phoneticScript", scriptCode(readings));
}

// SORT-AS has a word for the family name, then one for the given name.
void writeSortAs(Parameters& parameters, JsonWriter& out) {
  const auto words = parameters.takeAll("sort-as");
  if (words.empty()) return;
  out.writeName("sortAs");
  out.beginObject();
  for (std::size_t i = 0; i < words.size() && i < 2; ++i) {
    if (!words[i].empty()) out.writeMember(kComponents[i].kind, words[i]);
  }
  out.endObject();
}

bool hasComponents(const Parts& parts) {
  for (const auto& part : parts) {
    if (!part.empty()) return true;
  }
  return false;
}

// A name that is made of other properties is none (RFC 9554, section 4.4).
bool isDerived(const ContentLine& line) {
  const auto derived = Parameters(line).take("derived");
  return derived && vcard::isWord(*derived, "TRUE");
}

}  // namespace

bool isReadingOfName(const ContactLines& card, const ContentLine& line) {
  const auto* name = card.card().find("N");
  if (name == nullptr || !line.parameters.empty() || !line.group.empty()) return false;
  for (const auto& other : card.lines()) {
    if (vcard::isSameWord(other.name, line.name) && &other != &line) return false;
  }
  const auto parts = partsOfName(name->value);
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (vcard::isWord(line.name, kComponents[i].reading)) return !parts[i].empty();
  }
  return false;
}

void writeContactName(const ContactLines& card, JsonWriter& out) {
  const auto* name = card.placed("N");
  const auto* full = card.placed("FN");
  const auto parts = name != nullptr ? partsOfName(name->value) : Parts();
  const bool hasFull = full != nullptr && !isDerived(*full) && !full->value.empty();
  if (!hasComponents(parts) && !hasFull) return;
  out.writeName("name");
  out.beginObject();
  if (hasComponents(parts)) {
    Parameters parameters(*name);
    writeComponents(card, parts, out);
    writeSortAs(parameters, out);
    if (!parameters.empty()) {
      out.writeName("vCardParams");
      parameters.write(out);
    }
  }
  if (hasFull) out.writeMember("full", textOf(full->value));
  out.endObject();
}

}  // namespace ox::formats
