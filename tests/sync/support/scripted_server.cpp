#include "tests/sync/support/scripted_server.hpp"

#include <algorithm>
#include <arpa/inet.h>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <stdexcept>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include "tests/sync/support/scripted_connection.hpp"

namespace ox::support {
namespace {

// At a free port where none is given. Several of one process may be at one port.
int boundSocket(int port) {
  const int bound = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int on = 1;
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (bound < 0 || ::setsockopt(bound, SOL_SOCKET, SO_REUSEPORT, &on, sizeof on) != 0 ||
      ::bind(bound, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    throw std::runtime_error("no socket to listen on");
  }
  return bound;
}

// What was not read by the other side is lost, which finds a broken connection.
void resetAtClose(int socket) {
  const linger now{1, 0};
  ::setsockopt(socket, SOL_SOCKET, SO_LINGER, &now, sizeof now);
}

int portOf(int listening) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  if (::getsockname(listening, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::runtime_error("no name of the socket");
  }
  return ntohs(address.sin_port);
}

}  // namespace

class ScriptedServer::Parts {
 public:
  Parts() : reserved_(boundSocket(0)), port_(portOf(reserved_)) { open(); }
  Parts(const Parts&) = delete;
  Parts& operator=(const Parts&) = delete;
  ~Parts() {
    {
      const std::lock_guard lock(mutex_);
      isEnding_ = true;
      for (const int socket : open_) ::shutdown(socket, SHUT_RDWR);
    }
    ending_.notify_all();
    refuse();
    for (auto& thread : threads_) thread.join();
    ::close(reserved_);
  }

  void open() {
    if (listening_ >= 0) return;
    listening_ = boundSocket(port_);
    if (::listen(listening_, 64) != 0) throw std::runtime_error("nobody can listen");
    acceptor_ = std::thread([this] { acceptAll(); });
  }

  void refuse() {
    if (listening_ < 0) return;
    ::shutdown(listening_, SHUT_RDWR);
    acceptor_.join();
    ::close(std::exchange(listening_, -1));
  }

  int port() const { return port_; }

  template <typename Work>
  auto locked(Work work) {
    const std::lock_guard lock(mutex_);
    return work(*this);
  }

  Script script;
  std::size_t closing = 0;
  std::vector<ScriptedRequest> requests;
  std::size_t connections = 0;
  std::size_t mostAtOnce = 0;

 private:
  void acceptAll() {
    while (true) {
      const int socket = ::accept4(listening_, nullptr, nullptr, SOCK_CLOEXEC);
      const std::lock_guard lock(mutex_);
      if (socket < 0 || isEnding_) {
        if (socket >= 0) ::close(socket);
        return;
      }
      const auto number = connections++;
      if (closing > 0) {
        --closing;
        ::close(socket);
        continue;
      }
      const int on = 1;
      ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
      open_.push_back(socket);
      threads_.emplace_back([this, socket, number] { serve(socket, number); });
    }
  }

  void serve(int socket, std::size_t number) {
    ScriptedConnection connection(socket, [this](auto time) { return wait(time); });
    while (auto request = connection.read()) {
      request->connection = number;
      const auto answer = answerTo(*request);
      const bool isEnding = answer.silence.count() > 0 && !wait(answer.silence);
      // Before the first byte: whoever has read the answer may be quick with the next request.
      locked([](Parts& self) { --self.atOnce_; });
      if (answer.resets) resetAtClose(socket);
      if (isEnding || !connection.write(*request, answer)) break;
    }
    const std::lock_guard lock(mutex_);
    std::erase(open_, socket);
    ::close(socket);
  }

  ScriptedAnswer answerTo(const ScriptedRequest& request) {
    const auto current = locked([&](Parts& self) {
      self.requests.push_back(request);
      self.mostAtOnce = std::max(self.mostAtOnce, ++self.atOnce_);
      return self.script;
    });
    // The script may ask the server what it knows, so that the lock is another one.
    const std::lock_guard lock(scripts_);
    return current ? current(request) : ScriptedAnswer{.status = 404};
  }

  bool wait(std::chrono::milliseconds time) {
    std::unique_lock lock(mutex_);
    return !ending_.wait_for(lock, time, [this] { return isEnding_; });
  }

  int reserved_;  // keeps the port while nobody listens
  int port_;
  int listening_ = -1;
  std::mutex mutex_;
  std::mutex scripts_;
  std::condition_variable ending_;
  bool isEnding_ = false;
  std::size_t atOnce_ = 0;
  std::vector<int> open_;
  std::vector<std::thread> threads_;
  std::thread acceptor_;
};

ScriptedServer::ScriptedServer() : parts_(std::make_unique<Parts>()) {}
ScriptedServer::~ScriptedServer() = default;

void ScriptedServer::answer(Script script) {
  parts_->locked([&](Parts& parts) { parts.script = std::move(script); });
}

void ScriptedServer::closeNext(std::size_t connections) {
  parts_->locked([&](Parts& parts) { parts.closing = connections; });
}

void ScriptedServer::refuse() {
  parts_->refuse();
}

void ScriptedServer::open() {
  parts_->open();
}

std::string ScriptedServer::origin() const {
  return "http://127.0.0.1:" + std::to_string(port());
}

int ScriptedServer::port() const {
  return parts_->port();
}

std::vector<ScriptedRequest> ScriptedServer::requests() const {
  return parts_->locked([](Parts& parts) { return parts.requests; });
}

std::size_t ScriptedServer::connections() const {
  return parts_->locked([](Parts& parts) { return parts.connections; });
}

std::size_t ScriptedServer::mostAtOnce() const {
  return parts_->locked([](Parts& parts) { return parts.mostAtOnce; });
}

std::string ScriptedRequest::header(std::string_view lowerCaseName) const {
  for (const auto& [name, value] : headers) {
    if (name == lowerCaseName) return value;
  }
  return {};
}

bool ScriptedRequest::has(std::string_view lowerCaseName) const {
  return std::any_of(headers.begin(), headers.end(),
                     [&](const auto& header) { return header.first == lowerCaseName; });
}

std::string listed(const std::vector<ScriptedRequest>& requests) {
  std::string list;
  for (const auto& request : requests) {
    if (!list.empty()) list += ", ";
    list += request.method + " " + request.target;
  }
  return list;
}

}  // namespace ox::support
