#include "ox/sync/http/wire.hpp"

#include <algorithm>
#include <curl/curl.h>
#include <new>
#include <stdexcept>
#include <utility>

namespace ox::sync {
namespace {

void check(CURLMcode code) {
  if (code == CURLM_OUT_OF_MEMORY) throw std::bad_alloc();
  if (code != CURLM_OK) {
    throw std::runtime_error(std::string("libcurl failed: ") + curl_multi_strerror(code));
  }
}

}  // namespace

Wire::Wire() : multi_(curl_multi_init()) {
  if (multi_ == nullptr) throw std::bad_alloc();
}

Wire::~Wire() {
  for (auto* transfer : moving_) curl_multi_remove_handle(multi_, transfer->handle());
  idle_.clear();
  curl_multi_cleanup(multi_);
}

std::unique_ptr<Transfer> Wire::takeTransfer(const std::string& origin) {
  if (idle_.empty()) return std::make_unique<Transfer>();
  auto chosen = std::find_if(idle_.begin(), idle_.end(), [&](const auto& transfer) {
    return transfer->challengedBy == origin;
  });
  if (chosen == idle_.end()) --chosen;
  auto transfer = std::move(*chosen);
  idle_.erase(chosen);
  return transfer;
}

void Wire::giveBack(std::unique_ptr<Transfer> transfer) {
  stop(*transfer);
  idle_.push_back(std::move(transfer));
}

void Wire::start(Transfer& transfer) {
  moving_.push_back(&transfer);
  check(curl_multi_add_handle(multi_, transfer.handle()));
}

void Wire::stop(Transfer& transfer) {
  if (std::erase(moving_, &transfer) > 0) curl_multi_remove_handle(multi_, transfer.handle());
}

void Wire::turn(std::chrono::milliseconds most) {
  int running = 0;
  check(curl_multi_perform(multi_, &running));
  if (settle()) return;
  const auto time = std::max<std::chrono::milliseconds::rep>(most.count(), 0);
  check(curl_multi_poll(multi_, nullptr, 0, static_cast<int>(time), nullptr));
  check(curl_multi_perform(multi_, &running));
  settle();
  endSilent();
}

bool Wire::settle() {
  bool isAnyDone = false;
  int left = 0;
  while (const auto* message = curl_multi_info_read(multi_, &left)) {
    if (message->msg != CURLMSG_DONE) continue;
    const auto code = message->data.result;
    void* found = nullptr;
    curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &found);
    auto& transfer = *static_cast<Transfer*>(found);
    stop(transfer);
    transfer.finish(code);
    isAnyDone = true;
  }
  return isAnyDone;
}

void Wire::endSilent() {
  const auto now = Transfer::Clock::now();
  const auto silent = [&](const Transfer* transfer) { return transfer->isSilent(now); };
  for (auto found = std::find_if(moving_.begin(), moving_.end(), silent); found != moving_.end();
       found = std::find_if(moving_.begin(), moving_.end(), silent)) {
    auto& transfer = **found;
    stop(transfer);
    transfer.fallSilent();
  }
}

}  // namespace ox::sync
