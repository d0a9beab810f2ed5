#pragma once

#include <string>

#include "ox/sync/folder/card_folder.hpp"
#include "ox/sync/login_settings.hpp"
#include "ox/sync/remote/remote_book.hpp"

namespace ox::sync {

// A folder with one vCard a file, as other programs keep their contacts (the vdir layout). The href
// is the name of the file. Every listing is whole. Hidden files, files that do not end in ".vcf",
// and folders are no cards; a link is a card that nobody can read, so that what it leads to is
// neither doubled nor taken for deleted.
class FolderBook : public RemoteBook {
 public:
  explicit FolderBook(std::string path, WireHooks hooks = {});

  // The name is that in the file `displayname`, else the folder's.
  BookFacts facts() override;
  Listing list(const std::string& token) override;
  void fetch(std::span<const ListedCard> cards,
             const std::function<void(FetchedCard)>& sink) override;
  std::string pathOf(std::string_view href) const override;
  std::string hrefFor(std::string_view fileName) const override;
  // A card that replaces another one keeps its mode; a new one is for this user alone (0600).
  void push(std::span<const Push> pushes,
            const std::function<void(std::size_t, Pushed)>& sink) override;

 private:
  void stopIfAsked() const;
  Pushed pushed(const CardFolder& folder, const Push& push) const;

  std::string path_;
  WireHooks hooks_;
};

// As a book calls itself.
std::string nameOfFolder(const CardFolder& folder);

}  // namespace ox::sync
