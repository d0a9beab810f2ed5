#pragma once

#include <string_view>

namespace ox {

// Where the file of a neutral book is written to: from its beginning to its end, and then perhaps
// its first line once more, so that a pipe cannot be one. What fails is thrown.
class BookSink {
 public:
  virtual ~BookSink() = default;
  virtual void append(std::string_view bytes) = 0;
  // Writes over the first bytes, as many as these, of which all were appended. Comes at most once,
  // after everything else.
  virtual void replaceStart(std::string_view bytes) = 0;
};

}  // namespace ox
