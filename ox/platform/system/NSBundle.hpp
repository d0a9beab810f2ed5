#pragma once

#include <filesystem>
#include <memory>
#include <string_view>
#include <vector>

#include "ox/base/text.hpp"

namespace ox {

// The folders that hold the resources of a library. Immutable; safe from any thread.
class NSBundle {
 public:
  // The bundle of the library that holds the class. All classes of ours live in one library, so the
  // answer is the same for every name. Never null.
  static std::shared_ptr<NSBundle> bundleForClass(std::string_view className);

  // The path of the file "name.type" ("name" when the type is missing or empty); missing when there
  // is no such file, no name, or a name that is more than a file name. Looked for
  //   - in "resources" and "share/OxMacAddressBookSDK/resources" in the folder of the running
  //     library, or of the program that contains it, and in the three folders above,
  //   - under the prefix that the project was configured to be installed to,
  //   - in $OX_RESOURCES, read on each call.
  Text pathForResource_ofType(TextView name, TextView type) const;

 private:
  explicit NSBundle(std::vector<std::filesystem::path> folders) : folders_(std::move(folders)) {}

  std::vector<std::filesystem::path> folders_;
};

}  // namespace ox
