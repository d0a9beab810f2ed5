#pragma once

#include <string>
#include <string_view>
#include <unicode/unistr.h>

namespace ox {

// What transcribeToLatin means, done by ICU alone, without any short way: its reference and, for
// short texts, its last resort; a long one takes square time. Each thread prepares its own
// transliterator at its first call. Safe from any thread. For sources of this folder only.
std::string transcribeWithIcu(std::string_view text);
std::string transcribeWithIcu(icu::UnicodeString text);

// The characters that stand in those of ICU's rules which look at a neighbour ("重" is read
// otherwise before "庆"), in no order. Safe from any thread.
std::u32string contextualHan();

}  // namespace ox
