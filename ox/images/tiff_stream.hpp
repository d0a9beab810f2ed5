#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <tiffio.h>

namespace ox::images {

struct TiffClose {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, TiffClose>;

// A TIFF file in memory. It must stay where it is for as long as a handle from open() lives. What
// the library complains about is kept here instead of being printed.
class TiffStream {
 public:
  TiffStream(const TiffStream&) = delete;
  TiffStream& operator=(const TiffStream&) = delete;
  virtual ~TiffStream() = default;

  // The last complaint, "damaged" when there was none.
  const std::string& message() const { return message_; }
  // True once the library reported an error.
  bool failed() const { return failed_; }

  virtual std::string_view bytes() const = 0;
  // Writes at the position and moves it; false when this stream takes no writing.
  virtual bool write(std::string_view bytes) = 0;

  std::uint64_t position = 0;

 protected:
  TiffStream() = default;
  TiffHandle openAs(const char* mode);

 private:
  static int keepError(TIFF*, void* stream, const char* module, const char* format, va_list values);
  static int ignoreWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

  std::string message_ = "damaged";
  bool failed_ = false;
};

// Reads bytes that the caller keeps.
class TiffSource : public TiffStream {
 public:
  explicit TiffSource(std::string_view bytes) : bytes_(bytes) {}
  TiffHandle open() { return openAs("rm"); }  // m: not mapped into memory
  std::string_view bytes() const override { return bytes_; }
  bool write(std::string_view) override { return false; }

 private:
  std::string_view bytes_;
};

// Collects what is written.
class TiffSink : public TiffStream {
 public:
  TiffHandle open() { return openAs("wl"); }  // l: little-endian on every machine
  std::string take() { return std::move(bytes_); }
  std::string_view bytes() const override { return bytes_; }
  bool write(std::string_view bytes) override;

 private:
  std::string bytes_;
};

}  // namespace ox::images
