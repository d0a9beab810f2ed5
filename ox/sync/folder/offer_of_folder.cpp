#include "ox/sync/folder/offer_of_folder.hpp"

#include <cerrno>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "ox/sync/folder/folder_book.hpp"

namespace ox::sync {
namespace {

OfferedBook bookOf(const CardFolder& folder) {
  struct stat status {};
  const bool isOwn = ::fstat(folder.number(), &status) == 0 && status.st_uid == ::geteuid();
  return {.url = folder.path(),
          .name = nameOfFolder(folder),
          .description = {},
          .isReadOnly = !folder.isWritable(),
          .isOwn = isOwn};
}

// Those that are not hidden. Links are not followed.
std::vector<std::string> foldersIn(const CardFolder& folder) {
  std::vector<std::string> found;
  for (const auto& name : folder.names()) {
    const auto facts = name.starts_with('.') ? std::nullopt : folder.facts(name);
    if (facts && S_ISDIR(facts->mode)) found.push_back(folder.pathOf(name));
  }
  return found;
}

Offer offerOf(const CardFolder& folder) {
  Offer offer;
  offer.homes = {folder.path()};
  const auto inner = foldersIn(folder);
  if (inner.empty() || !folder.cardNames().empty()) {
    offer.books.push_back(bookOf(folder));
    return offer;
  }
  for (const auto& path : inner) {
    // One that cannot be read does not keep the user from the others.
    if (::access(path.c_str(), R_OK | X_OK) != 0) continue;
    const CardFolder book(path);
    if (!book.cardNames().empty()) offer.books.push_back(bookOf(book));
  }
  if (!offer.books.empty()) return offer;
  throw RemoteError(
      RemoteFailure::NoBook,
      folder.path() + ": neither it nor a folder in it holds a file that ends in .vcf");
}

}  // namespace

Offer offerOfFolder(const std::string& path) {
  std::error_code failed;
  const auto absolute = std::filesystem::canonical(path, failed);
  if (failed) throw RemoteError(RemoteFailure::NoBook, path + ": " + failed.message());
  try {
    return offerOf(CardFolder(absolute.string()));
  } catch (const std::system_error& error) {
    throw RemoteError(RemoteFailure::NoBook, error.what());
  } catch (const RemoteError& error) {
    throw RemoteError(RemoteFailure::NoBook, error.what());
  }
}

}  // namespace ox::sync
