#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "ox/sync/http/transfer.hpp"

namespace ox::sync {

// The connections of a client and the transfers over them.
class Wire {
 public:
  Wire();
  Wire(const Wire&) = delete;
  Wire& operator=(const Wire&) = delete;
  ~Wire();

  // One that is not in use, if possible one that holds the origin's challenge.
  std::unique_ptr<Transfer> takeTransfer(const std::string& origin);
  void giveBack(std::unique_ptr<Transfer> transfer);

  // Borrowed until it is done or stopped.
  void start(Transfer& transfer);
  void stop(Transfer& transfer);

  // Lets everything move on for at most that long; back earlier when something is done.
  void turn(std::chrono::milliseconds most);

 private:
  bool settle();
  void endSilent();

  void* multi_;  // CURLM*
  std::vector<Transfer*> moving_;
  std::vector<std::unique_ptr<Transfer>> idle_;
};

}  // namespace ox::sync
