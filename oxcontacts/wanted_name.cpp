#include "oxcontacts/wanted_name.hpp"

#include <sstream>

#include "ox/base/text/case.hpp"
#include "ox/base/text/composed.hpp"
#include "oxcontacts/context.hpp"

namespace ox::program {

WantedName::WantedName(const std::string& typed)
    : typed_(typed), composed_(composed(typed)), folded_(foldedForSearch(typed)) {}

bool WantedName::isNameOf(const Text& name) const {
  return name && (*name == typed_ || composed(*name) == composed_);
}

bool WantedName::isNearlyNameOf(const Text& name) const {
  return name && foldedForSearch(*name) == folded_;
}

bool WantedName::isPartOf(const Text& name) const {
  if (!name) return false;
  const auto folded = foldedForSearch(*name);
  std::istringstream words(folded_);
  std::string word;
  bool any = false;
  while (words >> word) {
    if (folded.find(word) == std::string::npos) return false;
    any = true;
  }
  return any;
}

void throwNotFound(const char* what, const std::string& text) {
  throw CommandError(kNotFound, std::string("there is no ") + what + " \"" + text + "\"");
}

void throwAmbiguous(const char* what, const std::string& text,
                    const std::vector<std::string>& candidates, std::size_t count) {
  std::string message = "\"" + text + "\" may be any of " + std::to_string(count) + " " + what +
                        "s; name one by its ID: ";
  for (std::size_t i = 0; i < candidates.size() && i < kListedCandidates; ++i) {
    message += (i == 0 ? "" : ", ") + candidates[i];
  }
  if (count > kListedCandidates) message += ", ...";
  throw CommandError(kUsage, message);
}

}  // namespace ox::program
