// page: persons, groups and books as one page for a browser.
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "ox/base/failures.hpp"
#include "oxcontacts/choice.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/edit/saving.hpp"
#include "oxcontacts/interruption.hpp"
#include "oxcontacts/output/counted.hpp"
#include "oxcontacts/output/progress_bar.hpp"
#include "oxcontacts/output_file.hpp"
#include "oxcontacts/page/page_data.hpp"
#include "oxcontacts/page/page_text.hpp"

namespace ox::program {
namespace {

struct Arguments {
  std::string book;
  std::string file = "-";
  bool opens = false;
  bool maps = false;
};

PageContent contentOf(const Context& context, const Arguments& arguments) {
  PageContent content;
  content.maps = arguments.maps ? Maps::Yes : Maps::No;
  const auto books = discoveredBooks(context);
  Choice choice;
  if (arguments.book.empty() || arguments.book == kAllBooks) {
    content.books.assign(books.begin(), books.end());
  } else {
    content.books = {findBook(books, arguments.book)};
    choice.book = content.books.front()->ID().value_or("");
  }
  content.ordered = inOrder(chosenPersons(context, choice), "name", true);
  return content;
}

void writePage(const Context& context, const Arguments& arguments, const std::string& file) {
  const OneMoment moment;
  const failures::Watch watch;
  const auto content = contentOf(context, arguments);
  const auto total = content.ordered.persons.size();
  OutputFile output(file);
  ProgressBar bar(context, "writing");
  std::size_t pieces = 0;
  output.write(kPageBeforeData);
  writePageData(content, [&](std::string_view piece) {
    output.write(piece);
    bar.show(100.0 * static_cast<double>(pieces++) / static_cast<double>(total + 1));
  });
  output.write(kPageAfterData);
  if (watch.hasFailures()) throw storeFailure("not everything could be read", watch);
  output.commit();
  bar.wipe();
  if (OutputFile::isStandardOutput(file)) return;
  context.tell("wrote a page of " + counted(total, "person") + " to " + file);
}

// A file for the browser, of this user alone, which stays until the folder is emptied: nobody tells
// when the browser has read it. Gone with this object unless it is kept.
class PrivatePage {
 public:
  PrivatePage() : path_(folder() + "/oxcontacts-XXXXXX.html") {
    constexpr int kEnding = 5;  // ".html"
    const SignalsHeld held;
    const int file = ::mkstemps(path_.data(), kEnding);
    if (file < 0) {
      throw CommandError(kFailed,
                         "no page can be made in " + folder() + ": " + std::strerror(errno));
    }
    ::close(file);
    guard_.emplace(path_);
  }
  PrivatePage(const PrivatePage&) = delete;
  PrivatePage& operator=(const PrivatePage&) = delete;
  ~PrivatePage() {
    if (guard_) ::unlink(path_.c_str());
  }

  const std::string& path() const { return path_; }
  void keep() { guard_.reset(); }

 private:
  static std::string folder() {
    for (const char* variable : {"XDG_RUNTIME_DIR", "TMPDIR"}) {
      const char* folder = std::getenv(variable);
      if (folder != nullptr && *folder != '\0') return folder;
    }
    return "/tmp";
  }

  std::string path_;
  std::optional<GoesWhenInterrupted> guard_;
};

void openInBrowser(std::string file) {
  std::string program = "xdg-open";
  std::array<char*, 3> words = {program.data(), file.data(), nullptr};
  pid_t process = 0;
  int status = 0;
  const int error =
      ::posix_spawnp(&process, program.c_str(), nullptr, nullptr, words.data(), environ);
  if (error == 0) {
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
  }
  if (error == 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
  const auto reason = error != 0 ? std::string(": ") + std::strerror(error) : std::string();
  throw CommandError(kFailed, "xdg-open could not open the page, which is " + file + reason);
}

void showPage(const Context& context, const Arguments& arguments) {
  if (arguments.opens) {
    PrivatePage page;
    writePage(context, arguments, page.path());
    page.keep();
    return openInBrowser(page.path());
  }
  if (OutputFile::isStandardOutput(arguments.file) && ::isatty(STDOUT_FILENO) != 0) {
    throw CommandError(kUsage,
                       "a page is nothing to read on a terminal; -o FILE writes it to a file, "
                       "--open shows it in a browser");
  }
  writePage(context, arguments, arguments.file);
}

}  // namespace

void declarePage(CLI::App& program, const Context& context) {
  auto* page =
      program.add_subcommand("page", "Write persons, groups and books as a page for a browser");
  const auto arguments = std::make_shared<Arguments>();
  page->add_option("--book", arguments->book, "Only those of this book")->type_name("BOOK");
  auto* file = page->add_option("-o,--output", arguments->file,
                                "Write to this file, whole or not at all; - is the standard output")
                   ->type_name("FILE");
  page->add_flag("--open", arguments->opens,
                 "Write a private file and show it in the browser (xdg-open)")
      ->excludes(file);
  page->add_flag("--maps", arguments->maps,
                 "Link addresses to a map; who follows such a link tells the map the address");
  page->footer(
      "The page is one file that fetches nothing: a list with a search as `find` has it, every "
      "value with its label, groups, birthdays, and a sheet to print. Who has the file has the "
      "contacts; that of --open stays in $XDG_RUNTIME_DIR, else $TMPDIR.");
  page->callback([&context, arguments] { showPage(context, *arguments); });
}

}  // namespace ox::program
