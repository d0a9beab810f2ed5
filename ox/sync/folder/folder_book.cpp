#include "ox/sync/folder/folder_book.hpp"

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "ox/sync/folder/card_file_writer.hpp"
#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {
namespace {

using Outcome = Pushed::Outcome;

Pushed answer(Outcome outcome, const Push& push, std::string reason = {}) {
  return {
      .outcome = outcome, .href = push.href, .etag = {}, .code = 0, .reason = std::move(reason)};
}

std::string withoutSpaceAtTheEnd(std::string text) {
  const auto last = text.find_last_not_of(" \t\r\n");
  text.resize(last == text.npos ? 0 : last + 1);
  return text;
}

// Whatever fails in one act of the file system beyond what concerns one card.
template <typename Act>
auto orAway(Act act) {
  try {
    return act();
  } catch (const std::system_error& error) {
    throw RemoteError(RemoteFailure::Away, error.what());
  }
}

std::string reasonOf(const std::system_error& error) {
  switch (error.code().value()) {
    case ELOOP:
      return "is a symbolic link, which is not followed";
    case EBUSY:
      return "is being written by another program";
    default:
      return error.code().message();
  }
}

// What concerns this card alone; nullopt is for the whole book.
std::optional<Outcome> outcomeOf(const std::system_error& error) {
  switch (error.code().value()) {
    case EROFS:
      return Outcome::ReadOnly;
    case EBUSY:
      return Outcome::Locked;
    case EFBIG:
      return Outcome::TooLarge;
    case EACCES:
    case EPERM:
    case EINVAL:
    case EISDIR:
    case ELOOP:
    case ENAMETOOLONG:
    case EOPNOTSUPP:
      return Outcome::Refused;
    default:
      return std::nullopt;
  }
}

Pushed create(const CardFolder& folder, const Push& push) {
  CardFileWriter writer(folder);
  const auto text = push.text();
  writer.write(text);
  if (!writer.putWhereNothingIs(push.href)) return answer(Outcome::Exists, push);
  auto done = answer(Outcome::Done, push);
  done.etag = writer.etag(text);
  return done;
}

// The card is looked at again when its text lies ready, at the last moment before it is replaced.
Pushed update(const CardFolder& folder, const Push& push, const FileFacts& before) {
  CardFileWriter writer(folder);
  const auto text = push.text();
  writer.write(text);
  writer.setMode(before.mode);
  if (!folder.isStill(push.href, push.etag)) return answer(Outcome::Changed, push);
  writer.putInPlaceOf(push.href);
  auto done = answer(Outcome::Done, push);
  done.etag = writer.etag(text);
  return done;
}

Pushed remove(const CardFolder& folder, const Push& push) {
  if (::unlinkat(folder.number(), push.href.c_str(), 0) == 0) return answer(Outcome::Done, push);
  if (errno == ENOENT) return answer(Outcome::Gone, push);
  throw std::system_error(errno, std::generic_category(), folder.pathOf(push.href));
}

}  // namespace

FolderBook::FolderBook(std::string path, WireHooks hooks)
    : path_(std::move(path)), hooks_(std::move(hooks)) {}

std::string nameOfFolder(const CardFolder& folder) {
  try {
    const auto content = folder.content("displayname");
    const auto name = content ? withoutSpaceAtTheEnd(content->text) : std::string();
    if (!name.empty() && name.find('\n') == name.npos) return name;
  } catch (const std::system_error&) {
    // Then it is called as the folder is.
  }
  auto path = std::filesystem::path(folder.path()).lexically_normal();
  if (!path.has_filename()) path = path.parent_path();
  return path.filename().string();
}

BookFacts FolderBook::facts() {
  const CardFolder folder(path_);
  return {.name = nameOfFolder(folder), .isReadOnly = !folder.isWritable()};
}

Listing FolderBook::list(const std::string& /*token*/) {
  const CardFolder folder(path_);
  return orAway([&] {
    Listing listing;
    listing.isWhole = true;
    for (auto& name : folder.cardNames()) {
      stopIfAsked();
      const auto etag = folder.etag(name);
      const auto facts = folder.facts(name);
      if (etag && facts) listing.cards.push_back({std::move(name), *etag, facts->size});
    }
    return listing;
  });
}

void FolderBook::fetch(std::span<const ListedCard> cards,
                       const std::function<void(FetchedCard)>& sink) {
  const CardFolder folder(path_);
  for (const auto& card : cards) {
    stopIfAsked();
    FetchedCard fetched{.state = FetchedCard::State::Unreadable,
                        .href = card.href,
                        .etag = card.etag,
                        .text = {},
                        .reason = {}};
    if (!isCardName(card.href)) {
      fetched.reason = "is not the name of a card in this folder";
    } else {
      try {
        auto content = folder.content(card.href);
        fetched.state = content ? FetchedCard::State::Read : FetchedCard::State::Gone;
        if (content) {
          fetched.etag = content->etag();
          fetched.text = std::move(content->text);
        }
      } catch (const std::system_error& error) {
        fetched.reason = reasonOf(error);
      }
    }
    sink(std::move(fetched));
  }
}

std::string FolderBook::pathOf(std::string_view href) const {
  return isCardName(href) ? std::string(href) : std::string();
}

std::string FolderBook::hrefFor(std::string_view fileName) const {
  return std::string(fileName) + ".vcf";
}

void FolderBook::stopIfAsked() const {
  if (hooks_.isStopped && hooks_.isStopped()) {
    throw RemoteError(RemoteFailure::Stopped, path_ + ": stopped");
  }
}

Pushed FolderBook::pushed(const CardFolder& folder, const Push& push) const {
  if (!isCardName(push.href)) {
    return answer(Outcome::Refused, push, "is not the name of a card in this folder");
  }
  if (push.kind == Push::Kind::Create) return create(folder, push);
  const auto facts = folder.facts(push.href);
  if (!facts) return answer(Outcome::Gone, push);
  if (!folder.isStill(push.href, push.etag)) return answer(Outcome::Changed, push);
  return push.kind == Push::Kind::Update ? update(folder, push, *facts) : remove(folder, push);
}

// What was told is on the disk when this returns, the names too.
void FolderBook::push(std::span<const Push> pushes,
                      const std::function<void(std::size_t, Pushed)>& sink) {
  const CardFolder folder(path_);
  const bool isWritable = folder.isWritable();
  if (isWritable) orAway([&] { CardFileWriter::sweep(folder); });
  for (std::size_t place = 0; place < pushes.size(); ++place) {
    stopIfAsked();
    const auto& push = pushes[place];
    auto done = answer(Outcome::ReadOnly, push, "no file can be written in " + path_);
    if (isWritable) {
      try {
        done = pushed(folder, push);
      } catch (const std::system_error& error) {
        const auto outcome = outcomeOf(error);
        if (!outcome) throw RemoteError(RemoteFailure::Away, error.what());
        done = answer(*outcome, push, reasonOf(error));
      }
    }
    sink(place, std::move(done));
  }
  if (isWritable) folder.sync();
}

}  // namespace ox::sync
