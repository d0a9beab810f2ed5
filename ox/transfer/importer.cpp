#include "ox/transfer/importer.hpp"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "ox/base/store_location.hpp"
#include "ox/base/text/charset.hpp"
#include "ox/base/text/locale.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/transfer/cards_ahead.hpp"
#include "ox/transfer/category_groups.hpp"
#include "ox/transfer/group_import.hpp"
#include "ox/transfer/other_cards.hpp"
#include "ox/transfer/person_import.hpp"
#include "ox/vcard/properties/full_name.hpp"
#include "ox/vcard/source/byte_source.hpp"
#include "ox/vcard/source/charset_batch.hpp"

namespace ox::vcard {
namespace {

std::vector<std::string> languagesOfUser() {
  auto language = textLanguage();
  if (language.empty()) return {};
  return {std::move(language)};
}

// What to call a card that nobody has looked at: the name, else what else names somebody.
std::string nameOf(const Card& card) {
  const auto textOf = [&](PropertyId id) {
    const auto* text = card.properties.text(id);
    return text != nullptr ? std::string_view(*text) : std::string_view();
  };
  std::string name(textOf(property_id::kGroupName));
  if (name.empty()) {
    composeFullName({.last = textOf(property_id::kLast),
                     .first = textOf(property_id::kFirst),
                     .middle = textOf(property_id::kMiddle)},
                    name);
  }
  for (const auto id : {property_id::kOrganization, property_id::kNickname}) {
    if (name.empty()) name = textOf(id);
  }
  return name;
}

// One import under way.
class Import {
 public:
  Import(const std::string& container, const ImportOptions& options, ImportReport& report)
      : container_(container),
        options_(options),
        report_(report),
        charsets_(std::make_shared<CharsetBatch>(report.files, languagesOfUser())) {
    if (options.preview) return;
    persons_.emplace(containerSource(), container, options, report);
    groups_.emplace(containerSource(), container, options, report);
  }

  void setTotal(std::uint64_t bytes) { total_ = bytes; }

  void readFile(const std::string& path) {
    const auto format = formatOfFile(path, options_.format);
    if (format != FileFormat::VCard) return readOther(path, format);
    FileSource source(path, options_.stop);
    CardsAhead cards(source, options_.categories, {options_.charset, path, charsets_});
    const auto firstProblem = report_.problems.size();
    while (!isStopped()) {
      auto* read = cards.next();
      // What a stop cut off is no card of the file.
      if (read == nullptr || isStopped()) break;
      take(path, *read);
      if (persons_ && persons_->isFull()) {
        persons_->commit();
        tell(cards.bytesRead());
      }
    }
    if (persons_) persons_->commit();
    tell(cards.bytesRead());
    before_ += cards.bytesRead();
    if (isStopped()) return;
    const auto& reader = cards.reader();
    report_.strayLines += reader.strayCount();
    if (reader.cardsSeen() == 0) {
      report_.addUseless(path, "holds no vCard");
      return;
    }
    ++report_.filesRead;
    for (const auto& stray : reader.strayLines()) {
      report_.addProblem(path, stray.line, stray.reason);
    }
    sortProblems(firstProblem);
  }

  void finish() {
    if (persons_) persons_->commit();
    if (isStopped()) {
      report_.interrupted = true;
    } else if (groups_) {
      groups_->commit();
      if (options_.categories == CategoriesAs::Groups) {
        report_.categoryGroups = addCategoryGroups(container_, persons_->categoryMembers());
      }
    }
  }

  bool isStopped() const { return options_.stop != nullptr && options_.stop->load(); }

 private:
  // A file of another format, whose persons and groups are made into cards.
  void readOther(const std::string& path, FileFormat format) {
    FileSource source(path, options_.stop);
    const auto cards = cardSourceOf(format, source, options_.charset);
    const auto firstProblem = report_.problems.size();
    try {
      while (!isStopped()) {
        auto card = cards->next();
        if (!card || isStopped()) break;
        for (auto& remark : cards->takeRemarks()) {
          report_.addProblem(path, remark.line, std::move(remark.reason));
        }
        auto read = cardRead(*std::move(card), options_.categories, cards->bytesRead());
        if (auto* person = std::get_if<PersonCard>(&read.result)) person->named = cards->named();
        take(path, read);
        if (persons_ && persons_->isFull()) {
          persons_->commit();
          tell(cards->bytesRead());
        }
      }
      if (!isStopped()) ++report_.filesRead;
    } catch (const formats::FormatError& error) {
      report_.addUseless(path, error.what());
    }
    if (persons_) persons_->commit();
    tell(cards->bytesRead());
    before_ += cards->bytesRead();
    sortProblems(firstProblem);
  }

  void sortProblems(std::size_t first) {
    std::stable_sort(report_.problems.begin() + static_cast<std::ptrdiff_t>(first),
                     report_.problems.end(),
                     [](const auto& a, const auto& b) { return a.line < b.line; });
  }

  void take(const std::string& path, CardRead& read) {
    if (auto* refusal = std::get_if<Refusal>(&read.result)) {
      refuse(path, refusal->line, std::move(refusal->reason));
      return;
    }
    if (auto* group = std::get_if<Card>(&read.result)) {
      if (!isWelcome(path, group->repairs)) return;
      if (options_.preview) return show(path, *group, group->repairs);
      groups_->add(path, std::move(*group));
    } else {
      auto& person = std::get<PersonCard>(read.result);
      if (!isWelcome(path, person.repairs)) return;
      if (options_.preview) return show(path, cardOf(person), person.repairs);
      persons_->add(path, std::move(person));
    }
  }

  void show(const std::string& path, const Card& card, std::vector<Problem>& repairs) {
    ++report_.cards;
    ++(card.isGroup ? report_.groups : report_.added);
    if (!repairs.empty()) ++report_.repaired;
    for (auto& repair : repairs) report_.addProblem(path, repair.line, std::move(repair.reason));
    options_.preview({path, card.line, card.isGroup, nameOf(card), card.charset});
  }

  bool isWelcome(const std::string& path, const std::vector<Problem>& repairs) {
    if (!options_.strict || repairs.empty()) return true;
    refuse(path, repairs.front().line, "not clean: " + repairs.front().reason);
    return false;
  }

  void refuse(const std::string& path, std::size_t line, std::string reason) {
    ++report_.cards;
    ++report_.refused;
    report_.addProblem(path, line, std::move(reason));
  }

  void tell(std::uint64_t read) const {
    if (options_.progress) options_.progress(before_ + read, total_);
  }

  std::string container_;
  const ImportOptions& options_;
  ImportReport& report_;
  std::shared_ptr<CharsetBatch> charsets_;
  std::optional<PersonImport> persons_;  // none in a preview
  std::optional<GroupImport> groups_;
  std::uint64_t before_ = 0;  // bytes of the files that are done
  std::uint64_t total_ = 0;
};

// The bytes of all files; every one that cannot or must not be opened goes to the report. Pipes are
// not opened, for they can be read only once.
std::uint64_t lookAt(const std::vector<std::string>& paths, ImportReport& report) {
  std::uint64_t total = 0;
  bool allKnown = true;
  for (const auto& path : paths) {
    if (isStoreFile(path)) {
      report.addUseless(path, "is a file of the store itself");
      continue;
    }
    std::error_code unknown;
    const auto type = std::filesystem::status(path, unknown).type();
    if (type == std::filesystem::file_type::fifo || type == std::filesystem::file_type::character) {
      allKnown = false;
      continue;
    }
    try {
      total += FileSource(path).size();
    } catch (const SourceError& error) {
      report.addUseless(path, error.what());
    }
  }
  return allKnown ? total : 0;
}

void fail(ImportReport& report, const std::exception& error) {
  report.failure = error.what();
  if (const auto* failure = dynamic_cast<const StoreError*>(&error)) {
    report.failureKind = failure->kind();
  }
}

// What is counted must survive a power cut, also when nothing more could be done.
void makeDurable(ImportReport& report) {
  const bool wrote = report.added + report.updated + report.groups > 0;
  if (!wrote && !report.failure.empty()) return;
  try {
    containerSource().checkpoint();
  } catch (const std::exception& error) {
    if (report.failure.empty()) return fail(report, error);
    report.failure += "; what was committed may not survive a power cut: ";
    report.failure += error.what();
  }
}

}  // namespace

void ImportReport::addUseless(const std::string& file, std::string reason) {
  const auto front = file + ": ";
  if (reason.starts_with(front)) reason.erase(0, front.size());
  uselessFiles.push_back(front + reason);
  addProblem(file, 0, std::move(reason));
}

void ImportReport::addProblem(const std::string& file, std::size_t line, std::string reason) {
  ++problemCount;
  if (problems.size() < kProblemsKept) problems.push_back({file, line, std::move(reason)});
}

void ImportReport::takeCounts(ImportReport& batch) {
  for (const auto count :
       {&ImportReport::cards, &ImportReport::added, &ImportReport::updated, &ImportReport::skipped,
        &ImportReport::refused, &ImportReport::groups, &ImportReport::repaired}) {
    this->*count += batch.*count;
  }
  for (auto& problem : batch.problems) {
    addProblem(problem.file, problem.line, std::move(problem.reason));
  }
  skippedCards.insert(skippedCards.end(), batch.skippedCards.begin(), batch.skippedCards.end());
  batch = {};
}

ImportReport importFiles(const std::vector<std::string>& paths, const std::string& container,
                         const ImportOptions& options) {
  ImportReport report;
  report.files = paths;
  const auto total = lookAt(paths, report);
  if (!report.uselessFiles.empty()) return report;
  try {
    Import import(container, options, report);
    import.setTotal(total);
    for (const auto& path : report.files) {
      if (import.isStopped()) break;
      try {
        import.readFile(path);
      } catch (const SourceError& error) {
        report.addUseless(path, error.what());
      }
    }
    import.finish();
  } catch (const std::exception& error) {
    fail(report, error);
  }
  if (!options.preview) makeDurable(report);
  return report;
}

bool isCharsetOfCards(const std::string& charset) {
  constexpr std::string_view kAscii = "BEGIN:VCARD;=\\ item1.N";
  return utf8FromCharset(kAscii, charset) == kAscii;
}

}  // namespace ox::vcard
