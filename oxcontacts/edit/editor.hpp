#pragma once

#include <string>

namespace ox::program {

inline constexpr const char* kUsualEditor = "vi";

// A text in a file of its own that only the user can read, for the user's editor: $VISUAL, else
// $EDITOR, else the configured one, else vi. The file goes with this object unless it is kept.
class EditedText {
 public:
  // Throws a CommandError (kFailed) where the file cannot be made.
  explicit EditedText(const std::string& text);
  EditedText(const EditedText&) = delete;
  EditedText& operator=(const EditedText&) = delete;
  ~EditedText();

  // Lets the user edit it and answers what it is then. Throws a CommandError (kFailed) when the
  // editor cannot be run or ends with an error, which tells that nothing is wanted of it.
  // The configured one may be empty.
  std::string edit(const std::string& configured);
  // Another text, to be edited next.
  void write(const std::string& text);
  // Leaves the file where it is, and answers where that is.
  const std::string& keep();

 private:
  std::string path_;
  bool isKept_ = false;
};

}  // namespace ox::program
