#pragma once

#include <cstddef>
#include <exception>
#include <memory>
#include <string>
#include <string_view>

#include "ox/OxAddressBookSDK/general/OxGeneralGroup.hpp"
#include "ox/OxAddressBookSDK/general/OxGeneralPerson.hpp"
#include "ox/OxAddressBookSDK/general/book_sink.hpp"
#include "ox/base/checksum.hpp"
#include "ox/base/data.hpp"
#include "ox/base/json_writer.hpp"

namespace ox {

// Writes the file of a neutral book (docs/neutral-book.md) record by record, so that nobody holds
// more than one of them for it. One thread at a time.
class BookWriter {
 public:
  // The sink is borrowed.
  explicit BookWriter(BookSink& sink) : sink_(sink) {}

  // All groups come before the first person, and no key comes twice among either. What cannot be
  // written is told by finish(), and nothing is added any more.
  void add(std::string_view key, const OxGeneralGroup& group);
  void add(std::string_view key, const OxGeneralPerson& person);
  // Copies of what the record answers now, by its ID; a missing record, and one without an ID, is
  // ignored.
  void addGroup(const std::shared_ptr<IOxGroup>& group);
  void addPerson(const std::shared_ptr<IOxPerson>& person);

  // True: the sink has the whole file. False, and noticed as a failure that names the person and
  // the property, when a value has no place in it; throws what else kept a record from being added.
  bool finish();

 private:
  // Not any more once something could not be written.
  bool goesOn() const { return failure_ == nullptr; }
  template <typename Write>
  void write(Write write);
  void flush();

  BookSink& sink_;
  JsonWriter out_;
  bool hasBegun_ = false;
  // Only the end tells which header the file has, so that the sum is kept for each.
  Checksum128 sum_;
  Checksum128 sumWithFiles_;
  bool withFiles_ = false;
  std::size_t groups_ = 0;
  std::size_t persons_ = 0;
  std::exception_ptr failure_;  // the first one, Unwritable too
};

// A book's file in memory.
class BookData final : public BookSink {
 public:
  void append(std::string_view bytes) override { file_ += bytes; }
  void replaceStart(std::string_view bytes) override { file_.replace(0, bytes.size(), bytes); }
  Data take() { return makeData(std::move(file_)); }

 private:
  std::string file_;
};

}  // namespace ox
