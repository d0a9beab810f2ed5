#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ox::program {

// What the user has written down to hold where neither an option nor the environment says
// otherwise.
struct ConfiguredValue {
  std::string key;
  std::string text;
  std::size_t line = 0;  // where its value stands in the file, from 1
};

// The keys that there are, and what each is for.
struct ConfigKey {
  std::string_view name;
  std::string_view what;
};
inline constexpr std::array kConfigKeys = {
    ConfigKey{"store", "the contact store, a path: ~/ is the home, another one begins at the file"},
    ConfigKey{"book",
              "the book that lists are of, and that add-person adds to, where none is named"},
    ConfigKey{"columns", "what the table of persons shows: text or a list"},
    ConfigKey{"sort", "how persons are listed: name, family, pinyin or store"},
    ConfigKey{"editor", "the command that edit opens a text with"},
    ConfigKey{"color", "colours: auto, always or never"},
    ConfigKey{"progress", "a progress bar: auto, always or never"},
};

// The configuration of a run.
class Config {
 public:
  Config() = default;
  // Reads the file that is named, which must be there; else $OX_CONTACTS_CONFIG, else
  // oxcontacts/config.yaml in $XDG_CONFIG_HOME (when that is an absolute path) or ~/.config, which
  // need not be. Throws a CommandError (kUsage) that tells file and line of what is no
  // configuration.
  static Config read(const std::string& named);

  // Empty when there is no place for one.
  const std::string& file() const { return file_; }
  bool isThere() const { return isThere_; }
  // Missing when the file says nothing of it.
  const ConfiguredValue* find(std::string_view key) const;
  std::string textOf(std::string_view key) const;
  // "FILE:12", where that value stands.
  std::string placeOf(std::string_view key) const;

 private:
  std::string file_;
  bool isThere_ = false;
  std::vector<ConfiguredValue> values_;
};

}  // namespace ox::program
