#pragma once

#include <string>
#include <string_view>

#include "ox/sync/folder/card_folder.hpp"

namespace ox::sync {

// A card that is written under a hidden name beside its place and put there when it is complete and
// on the disk. Gone with this object unless it was put. Failures are std::system_error.
class CardFileWriter {
 public:
  explicit CardFileWriter(const CardFolder& folder);
  CardFileWriter(const CardFileWriter&) = delete;
  CardFileWriter& operator=(const CardFileWriter&) = delete;
  ~CardFileWriter();

  void write(std::string_view text);
  // Otherwise it is for this user alone.
  void setMode(unsigned mode);
  // False, and nothing was changed, when something is there already.
  bool putWhereNothingIs(const std::string& name);
  void putInPlaceOf(const std::string& name);
  // As a reader would find it now.
  std::string etag(std::string_view text) const;

  // Removes what killed processes have left there.
  static void sweep(const CardFolder& folder);

 private:
  void finish();
  [[noreturn]] void fail(const std::string& name, int code) const;

  const CardFolder& folder_;
  std::string name_;
  OpenFile file_;
  bool isPut_ = false;
};

}  // namespace ox::sync
