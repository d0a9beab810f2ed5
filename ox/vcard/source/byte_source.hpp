#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace ox::vcard {

// Why a source cannot be read; what() says it in words for the user.
class SourceError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A run of bytes that is read once from front to back. One thread at a time.
class ByteSource {
 public:
  ByteSource() = default;
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;
  virtual ~ByteSource() = default;

  // Fills the buffer from where the last call ended; the number of bytes read, 0 only at the end.
  // Throws SourceError.
  virtual std::size_t read(char* buffer, std::size_t size) = 0;

  // Looks at bytes anywhere without moving the place of read(), which another thread may ask
  // meanwhile; 0 past the end, and always 0 for a source that can only be read in order.
  virtual std::size_t peekAt(std::uint64_t offset, char* buffer, std::size_t size);
};

// Bytes in memory, borrowed for the life of the source.
class MemorySource : public ByteSource {
 public:
  explicit MemorySource(std::string_view bytes) : bytes_(bytes) {}

  std::size_t read(char* buffer, std::size_t size) override;
  std::size_t peekAt(std::uint64_t offset, char* buffer, std::size_t size) override;

 private:
  std::string_view bytes_;
  std::size_t next_ = 0;
};

// A file, or anything else that can be opened and read (a pipe).
class FileSource : public ByteSource {
 public:
  // Opens the file; throws SourceError when it is missing, unreadable or a folder. Once `stop`,
  // which is borrowed, is set, what would have to be waited for (a pipe, a terminal) is at its end.
  explicit FileSource(const std::string& path, const std::atomic<bool>* stop = nullptr);
  ~FileSource() override;

  std::size_t read(char* buffer, std::size_t size) override;
  std::size_t peekAt(std::uint64_t offset, char* buffer, std::size_t size) override;
  // False for a pipe or a terminal, whose next bytes may have to be waited for.
  bool isFile() const { return isFile_; }
  // In bytes; 0 when it is not known beforehand (a pipe).
  std::uint64_t size() const { return size_; }

 private:
  bool waitForInput() const;

  std::string path_;
  const std::atomic<bool>* stop_;
  int descriptor_ = -1;
  bool isFile_ = false;
  std::uint64_t size_ = 0;
};

}  // namespace ox::vcard
