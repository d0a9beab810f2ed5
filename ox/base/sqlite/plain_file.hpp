#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ox::sqlite {

// A file of a database, read without the database. Never one that this process has open by the
// database as well, but for its log: closing it would drop the locks on it.
class PlainFile {
 public:
  // One that is not there is empty; a FailureError when it must be.
  enum class Missing : std::uint8_t { IsEmpty, Fails };
  PlainFile(const std::string& path, Missing missing);
  PlainFile(const PlainFile&) = delete;
  PlainFile& operator=(const PlainFile&) = delete;
  ~PlainFile();

  std::uint64_t size() const { return size_; }
  // Missing where the file ends too early, or the disk does not give them.
  std::optional<std::string> bytes(std::uint64_t from, std::size_t wanted) const;

 private:
  int file_;
  std::uint64_t size_ = 0;
};

// A number as the files hold it, most significant byte first. There must be as many bytes.
std::uint32_t bigEndian16(std::string_view bytes, std::size_t at);
std::uint32_t bigEndian32(std::string_view bytes, std::size_t at);

}  // namespace ox::sqlite
