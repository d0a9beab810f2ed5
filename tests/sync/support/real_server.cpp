#include "tests/sync/support/real_server.hpp"

#include <arpa/inet.h>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace ox::support {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

// The system's, whatever stands first in PATH: it is the one that has the servers' modules.
constexpr const char* kPython = "/usr/bin/python3";

const char* programOf(RealServer::Kind kind) {
  return kind == RealServer::Kind::Radicale ? "/usr/bin/radicale" : "/usr/bin/xandikos";
}

sockaddr_in loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

int freePort() {
  const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  auto address = loopback(0);
  socklen_t size = sizeof address;
  if (socket < 0 || ::bind(socket, reinterpret_cast<const sockaddr*>(&address), size) != 0 ||
      ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::runtime_error("no free port");
  }
  ::close(socket);
  return ntohs(address.sin_port);
}

void write(const fs::path& file, const std::string& text) {
  std::ofstream stream(file, std::ios::binary);
  stream << text;
  if (!stream.flush()) throw std::runtime_error("cannot write " + file.string());
}

std::string radicaleSettings(const fs::path& folder, int port) {
  return "[server]\nhosts = 127.0.0.1:" + std::to_string(port) +
         "\n[auth]\ntype = htpasswd\nhtpasswd_filename = " + (folder / "users").string() +
         "\nhtpasswd_encryption = plain\ndelay = 0\n[storage]\nfilesystem_folder = " +
         (folder / "store").string() + "\n";
}

}  // namespace

std::unique_ptr<RealServer> RealServer::started(Kind kind) {
  if (!fs::exists(kPython) || !fs::exists(programOf(kind))) return nullptr;
  auto pattern = (fs::temp_directory_path() / "ox-server-XXXXXX").string();
  if (!::mkdtemp(pattern.data())) throw std::runtime_error("no folder for the server");
  std::unique_ptr<RealServer> server(new RealServer(kind, pattern, 0));
  // Between the look for a free port and the server somebody else may have taken it.
  for (int tries = 0; tries < 3; ++tries) {
    server->port_ = freePort();
    server->start();
    if (server->isUp()) return server;
    server->stop();
  }
  throw std::runtime_error(std::string(programOf(kind)) + " does not come up");
}

RealServer::RealServer(Kind kind, fs::path folder, int port)
    : kind_(kind), folder_(std::move(folder)), port_(port) {
  fs::create_directories(folder_ / "store");
  if (kind_ == Kind::Xandikos) return;
  write(folder_ / "users", "ann:secret\n");
  write(folder_ / "password", "secret\n");
  fs::permissions(folder_ / "password", fs::perms::owner_read | fs::perms::owner_write);
  addBook("addressbook");
}

RealServer::~RealServer() {
  stop();
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

void RealServer::start() {
  std::vector<std::string> words = {kPython, programOf(kind_)};
  if (kind_ == Kind::Radicale) {
    write(folder_ / "settings", radicaleSettings(folder_, port_));
    words.insert(words.end(), {"-C", (folder_ / "settings").string()});
  } else {
    words.insert(words.end(),
                 {"-d", (folder_ / "store").string(), "--defaults", "--current-user-principal",
                  "/ann/", "-l", "127.0.0.1", "-p", std::to_string(port_)});
  }
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (auto& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  auto home = "HOME=" + folder_.string();
  std::string path = "PATH=/usr/bin:/bin";
  const std::array<char*, 3> environment = {home.data(), path.data(), nullptr};
  const auto log = (folder_ / "log").string();
  process_ = ::fork();
  if (process_ < 0) throw std::runtime_error("no process for the server");
  if (process_ > 0) return;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);  // also when the test crashes
  const int output = ::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
  ::dup2(output, STDOUT_FILENO);
  ::dup2(output, STDERR_FILENO);
  ::execve(kPython, arguments.data(), environment.data());
  ::_exit(127);
}

bool RealServer::isUp() {
  const auto end = std::chrono::steady_clock::now() + 60s;
  while (std::chrono::steady_clock::now() < end) {
    int status = 0;
    if (::waitpid(process_, &status, WNOHANG) != 0) {
      process_ = -1;  // it has ended by itself
      return false;
    }
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const auto address = loopback(port_);
    const bool isThere =
        ::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::close(socket);
    if (isThere) return true;
    std::this_thread::sleep_for(20ms);
  }
  return false;
}

void RealServer::stop() {
  if (process_ <= 0) return;
  ::kill(process_, SIGKILL);
  int status = 0;
  ::waitpid(process_, &status, 0);
  process_ = -1;
}

std::string RealServer::bookUrl() const {
  return origin() + (kind_ == Kind::Radicale ? "/ann/addressbook/" : "/ann/contacts/addressbook/");
}

std::string RealServer::passwordFile() const {
  return kind_ == Kind::Radicale ? (folder_ / "password").string() : std::string();
}

fs::path RealServer::folderOf(const std::string& book) const {
  return folder_ / "store" / "collection-root" / "ann" / book;
}

std::string RealServer::addBook(const std::string& name) {
  fs::create_directories(folderOf(name));
  write(folderOf(name) / ".Radicale.props",
        R"({"D:displayname": ")" + name + R"(", "tag": "VADDRESSBOOK"})");
  return origin() + "/ann/" + name + "/";
}

void RealServer::fill(const std::string& book, std::size_t cards) {
  for (std::size_t at = 0; at < cards; ++at) {
    const auto number = std::to_string(at);
    put(book, "card-" + number + ".vcf",
        "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:card-" + number + "\r\nFN:Person " + number +
            "\r\nN:" + number + ";Person;;;\r\nREV:2024-01-01T00:00:00Z\r\nEND:VCARD\r\n");
  }
}

void RealServer::put(const std::string& book, const std::string& file, const std::string& text) {
  write(folderOf(book) / file, text);
}

}  // namespace ox::support
