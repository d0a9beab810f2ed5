#pragma once

#include <string>
#include <string_view>

namespace ox {

// The text in upper-case Latin letters, for sorting and finding Chinese names: Han characters
// become their Mandarin syllables without tone marks ("张三" gives "ZHANG SAN"), everything else
// passes through. Exactly ICU's Han-Latin over the whole text, blanks that it inserts included
// ("Mr.Bean" gives "MR. BEAN"), then every combining mark removed, NFC, and the root locale's upper
// case. Ill-formed UTF-8 counts as U+FFFD. Safe from any thread.
std::string transcribeToLatin(std::string_view text);

}  // namespace ox
