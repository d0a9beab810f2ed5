#pragma once

#include <filesystem>
#include <string>

namespace ox::support {

// The temporary folder that this test process works in, and the variables that lead every part of
// the product there. Set up by the test program's main before anything touches the platform, gone
// when it ends. A second process works in the folder of the process that started it.
class StoreEnvironment {
 public:
  static StoreEnvironment& instance();

  // Makes the folder and sets OX_CONTACT_STORE, OX_TAG_STORE, HOME, XDG_DATA_HOME, XDG_CONFIG_HOME
  // and LC_ALL; takes OX_SYSTEM_VERSION and the other language variables away.
  void setUp();
  // Takes the folder as the starting process left it in the variables.
  void join();
  void tearDown();

  const std::filesystem::path& folder() const { return folder_; }
  std::filesystem::path contactStore() const { return folder_ / "contacts.db"; }
  std::filesystem::path tagStore() const { return folder_ / "tags.db"; }

 private:
  StoreEnvironment() = default;

  std::filesystem::path folder_;
};

// A path in this process's temporary folder.
std::filesystem::path temporaryPath(const std::string& name);
// Writes a file there; the result is its path.
std::filesystem::path temporaryFile(const std::string& name, const std::string& bytes);
std::string fileBytes(const std::filesystem::path& path);

// The user's locale ("de_DE.UTF-8"), which the user's country is worked out from.
void setUserLocale(const std::string& locale);
// The system version as "major.minor"; any other text makes the version queries fail.
void setSystemVersion(const std::string& version);
// Back to the built-in version.
void clearSystemVersion();

}  // namespace ox::support
