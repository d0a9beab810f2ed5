// photo: the picture of a person, set, fetched or removed.
#include "ox/base/failures.hpp"
#include "ox/images/image_codec.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/edit/saving.hpp"
#include "oxcontacts/files.hpp"
#include "oxcontacts/find.hpp"

namespace ox::program {
namespace {

constexpr std::uint64_t kLargestFile = std::uint64_t{64} << 20U;

struct Arguments {
  std::string person;
  std::string set;
  std::string get;
  bool clear = false;
};

std::string sizeOf(const Image& image) {
  return std::to_string(image.width) + " x " + std::to_string(image.height) + " pixels";
}

void changePicture(_ABPerson& person, const ImagePtr& image) {
  const failures::Watch watch;
  person.setThumbnail(image);
  if (!watch.isClear()) giveUp(watch);
}

void setPhoto(const Context& context, _ABPerson& person, const std::string& path) {
  std::string reason;
  const auto image = images::decodeImage(readFile(path, kLargestFile), &reason);
  if (!image) throw CommandError(kFailed, path + ": no picture that can be used: " + reason);
  changePicture(person, image);
  if (saveEdits()) {
    context.tell("set the picture of " + person.displayName().value_or("") + " (" + sizeOf(*image) +
                 ")");
  }
}

void getPhoto(const Context& context, const _ABPerson& person, const std::string& path) {
  const auto bytes = person.imageData();
  const auto name = person.displayName().value_or("");
  if (!bytes) throw CommandError(kNotFound, name + " has no picture");
  writeFile(path, *bytes);
  context.tell("wrote the picture of " + name + " to " + path);
}

void clearPhoto(const Context& context, _ABPerson& person) {
  changePicture(person, nullptr);
  if (saveEdits()) context.tell(person.displayName().value_or("") + " has no picture now");
}

void handlePhoto(const Context& context, const Arguments& arguments) {
  const auto person = findPerson(context, arguments.person);
  if (!arguments.set.empty()) return setPhoto(context, *person, arguments.set);
  if (!arguments.get.empty()) return getPhoto(context, *person, arguments.get);
  if (arguments.clear) clearPhoto(context, *person);
}

}  // namespace

void declarePhoto(CLI::App& program, const Context& context) {
  auto* photo = program.add_subcommand("photo", "Set, fetch or remove the picture of a person");
  const auto arguments = std::make_shared<Arguments>();
  photo->add_option("PERSON", arguments->person, "Who")->required();
  auto* what = photo->add_option_group("One of");
  what->add_option("--set", arguments->set,
                   "Take this PNG, JPEG or TIFF file (64 MiB, 64 M pixels at most)")
      ->type_name("FILE");
  what->add_option("--get", arguments->get, "Write the picture as it is stored to this file")
      ->type_name("FILE");
  what->add_flag("--clear", arguments->clear, "Remove the picture");
  what->require_option(1);
  photo->callback([&context, arguments] { handlePhoto(context, *arguments); });
}

}  // namespace ox::program
