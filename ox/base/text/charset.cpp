#include "ox/base/text/charset.hpp"

#include <array>
#include <cassert>
#include <cctype>
#include <memory>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/ustring.h>

#include "ox/base/text/utf8.hpp"

namespace ox {
namespace {

struct Rename {
  std::string_view from;
  const char* to;
};

// Names that stand for a larger set in practice.
constexpr std::array kLargerSets = {
    Rename{"ISO88591", "windows-1252"},
    Rename{"LATIN1", "windows-1252"},
    Rename{"USASCII", "windows-1252"},
    Rename{"ASCII", "windows-1252"},
    Rename{"ISO88592", "ISO-8859-2"},
    Rename{"ISO88599", "windows-1254"},
    Rename{"GB2312", "GBK"},
    Rename{"ANSI", "windows-1252"},
    Rename{"KSC56011987", "windows-949"},
    Rename{"EUCKR", "windows-949"},
};

// Letters and digits only, upper case: how charset names are compared.
std::string bareName(std::string_view name) {
  std::string bare;
  for (const char c : name) {
    if (std::isalnum(static_cast<unsigned char>(c)) == 0) continue;
    bare += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return bare;
}

const char* largerSet(std::string_view bare) {
  for (const auto& row : kLargerSets) {
    if (row.from == bare) return row.to;
  }
  return nullptr;
}

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, CloseConverter>;

// Writes U+FFFD where the converter would choose a substitute of its own.
void replaceIllFormed(const void* /*context*/, UConverterToUnicodeArgs* args, const char* /*bytes*/,
                      std::int32_t /*length*/, UConverterCallbackReason reason,
                      UErrorCode* status) {
  if (reason > UCNV_IRREGULAR) return;
  *status = U_ZERO_ERROR;
  constexpr UChar kReplacement = 0xFFFD;
  ucnv_cbToUWriteUChars(args, &kReplacement, 1, 0, status);
}

// The thread's converter of that name: opening one is dear, and a file rarely mixes charsets.
UConverter* converterFor(const std::string& name) {
  thread_local std::string openName;
  thread_local Converter open;
  if (!open || openName != name) {
    UErrorCode status = U_ZERO_ERROR;
    open.reset(ucnv_open(name.c_str(), &status));
    openName = name;
    if (open) ucnv_setToUCallBack(open.get(), replaceIllFormed, nullptr, nullptr, nullptr, &status);
    if (U_FAILURE(status) != 0) open = nullptr;
  }
  return open.get();
}

// UTF-8 from the converter's charset. Blocks of UTF-16 keep the memory bounded by the result.
std::string convert(UConverter* converter, std::string_view bytes) {
  std::string result;
  result.reserve(bytes.size() + bytes.size() / 2);
  std::array<UChar, 1024> units{};
  std::array<char, 3 * units.size()> out{};
  const char* source = bytes.data();
  const char* const end = source + bytes.size();
  ucnv_reset(converter);
  char16_t half = 0;  // a high surrogate that ended the last block
  bool more = true;
  while (more) {
    UErrorCode status = U_ZERO_ERROR;
    UChar* next = units.data();
    if (half != 0) *next++ = half;
    half = 0;
    ucnv_toUnicode(converter, &next, units.data() + units.size(), &source, end, nullptr, 1,
                   &status);
    more = status == U_BUFFER_OVERFLOW_ERROR;
    assert(next >= units.data() && next <= units.data() + units.size() && source <= end);
    auto count = static_cast<std::int32_t>(next - units.data());
    if (more && count > 0 && U16_IS_LEAD(units[static_cast<std::size_t>(count - 1)])) {
      half = units[static_cast<std::size_t>(--count)];
    }
    UErrorCode written = U_ZERO_ERROR;
    std::int32_t length = 0;
    u_strToUTF8WithSub(out.data(), static_cast<std::int32_t>(out.size()), &length, units.data(),
                       count, 0xFFFD, nullptr, &written);
    assert(U_SUCCESS(written) && length <= static_cast<std::int32_t>(out.size()));
    result.append(out.data(), static_cast<std::size_t>(length));
  }
  return result;
}

}  // namespace

std::optional<std::string> utf8FromCharset(std::string_view bytes, std::string_view charset) {
  const auto bare = bareName(charset);
  if (bare == "UTF8") return validUtf8(std::string(bytes));
  const char* larger = largerSet(bare);
  auto* converter = converterFor(larger != nullptr ? larger : std::string(charset));
  if (converter == nullptr) return std::nullopt;
  return convert(converter, bytes);
}

}  // namespace ox
