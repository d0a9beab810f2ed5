#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "ox/base/charsets/charset_scores.hpp"

namespace ox::vcard {

// What is known of the charset of one file before it is looked at: the languages of the user, and
// the other files that came with it. Nobody reads those before the charset of one is asked for, so
// that files in UTF-8 cost nothing. Safe from any thread.
class CharsetBatch {
 public:
  CharsetBatch(std::vector<std::string> paths, std::vector<std::string> languages)
      : paths_(std::move(paths)), languages_(std::move(languages)) {}

  const std::vector<std::string>& languages() const { return languages_; }
  // What the files besides that one tell, each with its weights. What is no plain file tells
  // nothing.
  std::vector<CharsetWeights> weightsBeside(const std::string& path);

 private:
  std::vector<std::string> paths_;
  std::vector<std::string> languages_;
  std::mutex mutex_;
  std::optional<std::vector<std::optional<CharsetWeights>>> weights_;
};

}  // namespace ox::vcard
