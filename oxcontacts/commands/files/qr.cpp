// qr: a person's card as a QR code, for a telephone's camera.
#include <cerrno>
#include <cstring>
#include <iostream>
#include <memory>
#include <qrencode.h>
#include <sstream>

#include "ox/images/image_codec.hpp"
#include "ox/platform/AddressBook/ABPerson.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/edit/saving.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output_file.hpp"

namespace ox::program {
namespace {

struct Arguments {
  std::string person;
  std::string file;
};

// The modules of a code within the blank margin that readers need.
class QrCode {
 public:
  // Throws std::length_error for more than a code can hold.
  explicit QrCode(const std::string& text)
      : code_(QRcode_encodeString8bit(text.c_str(), 0, QR_ECLEVEL_L), QRcode_free) {
    if (code_) return;
    if (errno == ERANGE) throw std::length_error("too long for a QR code");
    throw std::runtime_error(std::string("the QR code: ") + std::strerror(errno));
  }

  int size() const { return code_->width + 2 * kMargin; }
  bool isDark(int row, int column) const {
    const int y = row - kMargin;
    const int x = column - kMargin;
    const bool isInside = x >= 0 && y >= 0 && x < code_->width && y < code_->width;
    return isInside && (code_->data[y * code_->width + x] & 1U) != 0;
  }

 private:
  static constexpr int kMargin = 4;  // ISO/IEC 18004, section 5.3.8
  std::unique_ptr<QRcode, void (*)(QRcode*)> code_;
};

// Of a card that no code can hold, what people exchange: names, company, numbers, addresses.
std::string shortCard(const std::string& card) {
  std::istringstream lines(card);
  std::string result;
  bool keeps = false;
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with(' ')) {
      keeps = false;
      // Behind the group that ties a label to it.
      const auto dot = line.find_first_of(".:;");
      const bool isGrouped = dot != std::string::npos && line[dot] == '.';
      const auto bare = isGrouped ? line.substr(dot + 1) : line;
      for (const char* name : {"BEGIN", "VERSION", "N", "FN", "ORG", "TITLE", "TEL", "EMAIL", "URL",
                               "X-ABLabel", "END"}) {
        const auto end = std::strlen(name);
        keeps = keeps || (bare.starts_with(name) && bare.size() > end &&
                          (bare[end] == ':' || bare[end] == ';'));
      }
    }
    if (keeps) result += line + "\n";
  }
  return result;
}

// Two rows of modules in a line of text. What is dark in the code is dark where colours can be
// given, and elsewhere on a terminal of light letters on dark ground.
std::string asText(const QrCode& code, bool withColors) {
  std::string text;
  for (int row = 0; row < code.size(); row += 2) {
    if (withColors) text += "\x1b[40;97m";
    for (int column = 0; column < code.size(); ++column) {
      const bool upper = !code.isDark(row, column);
      const bool lower = row + 1 < code.size() && !code.isDark(row + 1, column);
      text += upper ? (lower ? "█" : "▀") : (lower ? "▄" : " ");
    }
    text += withColors ? "\x1b[0m\n" : "\n";
  }
  return text;
}

Data asPng(const QrCode& code) {
  constexpr int kModule = 8;  // pixels
  const int side = code.size() * kModule;
  const auto pixelsASide = static_cast<std::uint32_t>(side);
  Pixels pixels;
  pixels.reserve(std::size_t{pixelsASide} * pixelsASide * 4);
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      const std::uint8_t light = code.isDark(y / kModule, x / kModule) ? 0 : 255;
      pixels.insert(pixels.end(), {light, light, light, 255});
    }
  }
  return images::encodePng(Image(pixelsASide, pixelsASide, std::move(pixels)));
}

QrCode codeOf(const Context& context, const std::string& card) {
  try {
    return QrCode(card);
  } catch (const std::length_error&) {
    context.tell("the card is too long for a QR code: names, company, numbers and addresses alone");
  }
  try {
    return QrCode(shortCard(card));
  } catch (const std::length_error&) {
    throw CommandError(kFailed, "the card is too long for a QR code");
  }
}

void showCode(const Context& context, const Arguments& arguments) {
  const auto person = findPerson(context, arguments.person);
  const failures::Watch watch;
  const auto card = person->vCardRepresentation();
  if (!card) throw storeFailure("the card could not be read", watch);
  const auto code = codeOf(context, std::string(card->begin(), card->end()));
  if (arguments.file.empty()) {
    std::cout << asText(code, context.usesColor());
    return;
  }
  const auto png = asPng(code);
  if (!png) throw CommandError(kFailed, "the picture of the QR code could not be made");
  OutputFile file(arguments.file);
  file.write({reinterpret_cast<const char*>(png->data()), png->size()});
  file.commit();
}

}  // namespace

void declareQr(CLI::App& program, const Context& context) {
  auto* qr = program.add_subcommand(
      "qr", "Show a person's card, without the picture, as a QR code for a telephone");
  const auto arguments = std::make_shared<Arguments>();
  qr->add_option("PERSON", arguments->person, "Who")->required();
  qr->add_option("-o,--output", arguments->file,
                 "Write it to this file as PNG; - is the standard output")
      ->type_name("FILE");
  qr->callback([&context, arguments] { showCode(context, *arguments); });
}

}  // namespace ox::program
