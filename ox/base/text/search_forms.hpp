#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ox {

// The ways in which people type a text when they look for it, folded (foldedForSearch): the text
// itself first, then what is different: with its umlauts as two letters ("muller", "mueller"), and
// other scripts in Latin letters, as ICU writes them ("Чехов": "cehov", "chekhov"; "王小明":
// "wang xiao ming"). Of a long text those of its beginning. Each once. Safe from any thread.
std::vector<std::string> searchForms(std::string_view text);

// Of ICU and its Unicode: while it stays, the forms of every text do.
std::string searchFormsVersion();

}  // namespace ox
