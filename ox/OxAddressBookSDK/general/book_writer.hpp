#pragma once

#include <cstddef>
#include <exception>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ox/OxAddressBookSDK/general/OxGeneralGroup.hpp"
#include "ox/OxAddressBookSDK/general/OxGeneralPerson.hpp"
#include "ox/OxAddressBookSDK/general/json_writer.hpp"
#include "ox/base/data.hpp"

namespace ox {

// Puts the file of a neutral book together (docs/neutral-book.md) record by record, so that nobody
// has to hold the records of a whole book for it. One thread at a time.
class BookWriter {
 public:
  BookWriter();

  // All groups come before the first person. A later record of the same key takes the place of an
  // earlier one. What cannot be written, or for which there is no memory, is told by finish().
  void add(std::string_view key, const OxGeneralGroup& group);
  void add(std::string_view key, const OxGeneralPerson& person);

  // Nothing is added afterwards. Missing, and noticed as a failure that names the person and the
  // property, when a value has no place in the file; throws what else kept a record from being
  // added.
  Data finish();

 private:
  // What one record has become.
  struct Line {
    std::size_t begin = 0;  // in the text
    std::size_t end = 0;
    bool holdsPictureFile = false;
    std::string refusal;  // why it could not be written
  };
  using Places = std::unordered_map<std::string, std::size_t>;  // of lines by key

  template <typename Write>
  void addLine(Places& places, std::string_view key, Write write);
  std::string linesInOrder(const std::string& text) const;

  JsonWriter out_;
  std::vector<Line> lines_;
  Places groups_;
  Places persons_;
  bool areInOrder_ = true;  // none has taken the place of another
  std::exception_ptr failure_;
};

}  // namespace ox
