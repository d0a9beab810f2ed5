#include "tests/support/store_environment.hpp"

#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace ox::support {
namespace {

constexpr const char* kFolderVariable = "OX_TEST_FOLDER";

void set(const char* name, const std::string& value) {
  if (::setenv(name, value.c_str(), 1) != 0) throw std::runtime_error("setenv failed");
}

}  // namespace

StoreEnvironment& StoreEnvironment::instance() {
  static auto& environment = *new StoreEnvironment;
  return environment;
}

void StoreEnvironment::setUp() {
  auto pattern =
      (std::filesystem::canonical(std::filesystem::temp_directory_path()) / "ox-test-XXXXXX")
          .string();
  if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
  folder_ = pattern;
  for (const auto* name : {"home", "data"}) std::filesystem::create_directory(folder_ / name);
  set(kFolderVariable, folder_.string());
  set("OX_CONTACT_STORE", contactStore().string());
  set("OX_TAG_STORE", tagStore().string());
  set("HOME", (folder_ / "home").string());
  set("XDG_DATA_HOME", (folder_ / "data").string());
  set("XDG_CONFIG_HOME", (folder_ / "config").string());  // where nothing is
  set("LC_ALL", "C.UTF-8");
  for (const auto* name : {"LANG", "LANGUAGE", "LC_ADDRESS", "OX_SYSTEM_VERSION", "OX_RESOURCES",
                           "OX_CONTACTS_CONFIG", "VISUAL", "EDITOR", "NO_COLOR"}) {
    ::unsetenv(name);
  }
}

void StoreEnvironment::join() {
  const auto* folder = std::getenv(kFolderVariable);
  if (folder == nullptr) throw std::runtime_error("a second process without a first one");
  folder_ = folder;
}

void StoreEnvironment::tearDown() {
  std::error_code ignored;  // a detached worker may still be writing there
  std::filesystem::remove_all(folder_, ignored);
}

std::filesystem::path temporaryPath(const std::string& name) {
  return StoreEnvironment::instance().folder() / name;
}

std::filesystem::path temporaryFile(const std::string& name, const std::string& bytes) {
  auto path = temporaryPath(name);
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

std::string fileBytes(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void setUserLocale(const std::string& locale) {
  set("LC_ALL", locale);
}

void setSystemVersion(const std::string& version) {
  set("OX_SYSTEM_VERSION", version);
}

void clearSystemVersion() {
  ::unsetenv("OX_SYSTEM_VERSION");
}

}  // namespace ox::support
