#include "ox/images/tiff_stream.hpp"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <new>

namespace ox::images {
namespace {

TiffStream& streamOf(thandle_t handle) {
  return *static_cast<TiffStream*>(handle);
}

tmsize_t readBytes(thandle_t handle, void* out, tmsize_t size) {
  auto& stream = streamOf(handle);
  const auto all = stream.bytes();
  if (size <= 0 || stream.position >= all.size()) return 0;
  const auto rest = all.substr(static_cast<std::size_t>(stream.position));
  const auto count = std::min(static_cast<std::size_t>(size), rest.size());
  std::memcpy(out, rest.data(), count);
  stream.position += count;
  return static_cast<tmsize_t>(count);
}

// No exception may pass through the library.
tmsize_t writeBytes(thandle_t handle, void* in, tmsize_t size) {
  if (size <= 0) return 0;
  try {
    const std::string_view bytes(static_cast<const char*>(in), static_cast<std::size_t>(size));
    return streamOf(handle).write(bytes) ? size : -1;
  } catch (const std::bad_alloc&) {
    return -1;
  }
}

toff_t seek(thandle_t handle, toff_t offset, int whence) {
  auto& stream = streamOf(handle);
  // Offsets are unsigned; backward ones wrap round, as the library means them to.
  if (whence == SEEK_SET) stream.position = offset;
  if (whence == SEEK_CUR) stream.position += offset;
  if (whence == SEEK_END) stream.position = stream.bytes().size() + offset;
  return stream.position;
}

int closeNothing(thandle_t) {
  return 0;
}

toff_t sizeOf(thandle_t handle) {
  return streamOf(handle).bytes().size();
}

}  // namespace

int TiffStream::keepError(TIFF*, void* stream, const char*, const char* format, va_list values) {
  auto& self = *static_cast<TiffStream*>(stream);
  self.failed_ = true;
  std::array<char, 200> text{};
  std::vsnprintf(text.data(), text.size(), format, values);
  try {
    self.message_ = text.data();
  } catch (const std::bad_alloc&) {
    // The older message stays.
  }
  return 1;
}

TiffHandle TiffStream::openAs(const char* mode) {
  constexpr tmsize_t kMaxAllocation = tmsize_t{512} << 20;
  auto* options = TIFFOpenOptionsAlloc();
  if (options == nullptr) return nullptr;
  TIFFOpenOptionsSetMaxSingleMemAlloc(options, kMaxAllocation);
  TIFFOpenOptionsSetErrorHandlerExtR(options, keepError, this);
  TIFFOpenOptionsSetWarningHandlerExtR(options, ignoreWarning, this);
  TiffHandle handle(TIFFClientOpenExt("picture", mode, this, readBytes, writeBytes, seek,
                                      closeNothing, sizeOf, nullptr, nullptr, options));
  TIFFOpenOptionsFree(options);
  return handle;
}

bool TiffSink::write(std::string_view bytes) {
  constexpr std::uint64_t kMaxSize = std::uint64_t{1} << 30U;
  if (position > kMaxSize || bytes.size() > kMaxSize - position) return false;
  const auto at = static_cast<std::size_t>(position);
  if (at + bytes.size() > bytes_.size()) bytes_.resize(at + bytes.size());
  std::copy(bytes.begin(), bytes.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(at));
  position += bytes.size();
  return true;
}

}  // namespace ox::images
