#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ox/base/export.hpp"

namespace ox {

// Text as every layer speaks of it: UTF-8, and missing is never the same as empty.
using Text = std::optional<std::string>;

// A borrowed Text, for parameters: lives no longer than the argument it was made from.
class TextView {
 public:
  constexpr TextView() = default;
  constexpr TextView(std::nullopt_t) {}
  constexpr TextView(std::nullptr_t) {}
  constexpr TextView(std::string_view text) : text_(text) {}
  constexpr TextView(const char* text) {
    if (text != nullptr) text_ = text;
  }
  TextView(const std::string& text) : text_(text) {}
  TextView(const Text& text) {
    if (text) text_ = *text;
  }

  constexpr explicit operator bool() const { return text_.has_value(); }
  constexpr std::string_view operator*() const { return *text_; }
  constexpr const std::string_view* operator->() const { return &*text_; }
  Text toText() const { return text_ ? Text(std::in_place, *text_) : std::nullopt; }

  friend constexpr bool operator==(TextView a, TextView b) { return a.text_ == b.text_; }

 private:
  std::optional<std::string_view> text_;
};

// The text with every occurrence of `what` taken out.
OX_EXPORT std::string withoutAll(std::string_view text, std::string_view what);

// The text with its line feeds taken out; missing stays missing.
OX_EXPORT Text withoutLineBreaks(TextView text);

}  // namespace ox
