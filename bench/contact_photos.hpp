#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "bench/random.hpp"

namespace ox::bench {

// JPEG pictures of 3 to 10 kB that decode.
class PhotoPool {
 public:
  explicit PhotoPool(Random& random);

  // One of them in base64, told apart from all others by the mark, which stands in it as a comment.
  std::string base64(Random& random, std::string_view mark) const;

 private:
  std::vector<std::string> photos_;
};

}  // namespace ox::bench
