#include "ox/platform/store/schema/store_connection.hpp"

#include <exception>
#include <unistd.h>
#include <utility>

#include "ox/platform/store/schema/noted_act.hpp"

namespace ox {

StoreConnection::StoreConnection(sqlite::Connection file)
    : file_(std::move(file)), anchor_(std::in_place, file_), openedBy_(::getpid()) {}

StoreConnection::StoreConnection(StoreConnection&& other) noexcept = default;

StoreConnection& StoreConnection::operator=(StoreConnection&& other) noexcept {
  close();
  file_ = std::move(other.file_);
  anchor_ = std::move(other.anchor_);
  openedBy_ = other.openedBy_;
  return *this;
}

StoreConnection::~StoreConnection() {
  close();
}

bool StoreConnection::isOpenHere() const {
  return isOpen() && openedBy_ == ::getpid();
}

void StoreConnection::close() noexcept {
  if (!isOpenHere()) return;
  const auto looked = lookAtNote();
  file_ = sqlite::Connection();
  if (looked.mayGo) anchor_->settle(looked.noted);
}

StoreConnection::Looked StoreConnection::lookAtNote() noexcept try {
  auto noted = anchor_->read();
  if (!noted || stateOf(*noted, file_) != NotedAct::IsMissing) return {true, noted};
  if (file_.totalChanges() == 0) file_.keepLog();
  return {};
} catch (const std::exception&) {
  return {};  // a note that stays says nothing wrong
}

}  // namespace ox
