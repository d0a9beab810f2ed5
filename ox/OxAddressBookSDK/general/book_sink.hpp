#pragma once

#include <string_view>

namespace ox {

// Where the file of a neutral book is written to. What fails is thrown.
class BookSink {
 public:
  virtual ~BookSink() = default;
  virtual void append(std::string_view bytes) = 0;
  // In the place of the first bytes, as many as these; the rest is there.
  virtual void replaceStart(std::string_view bytes) = 0;
};

}  // namespace ox
