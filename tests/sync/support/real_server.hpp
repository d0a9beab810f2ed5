#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/types.h>

namespace ox::support {

// A CardDAV server of the system's, as its own process on loopback with a folder of its own; both
// end with the object. Its user is ann; Radicale wants the password "secret", Xandikos none.
class RealServer {
 public:
  enum class Kind { Radicale, Xandikos };

  // Null where the server is not installed. Throws std::runtime_error when it does not come up.
  static std::unique_ptr<RealServer> started(Kind kind);
  RealServer(const RealServer&) = delete;
  RealServer& operator=(const RealServer&) = delete;
  ~RealServer();

  std::string origin() const { return "http://127.0.0.1:" + std::to_string(port_); }
  // Of ann's one book, which is there from the beginning; its name there is "addressbook".
  std::string bookUrl() const;
  // A file that nobody else can read, with the password in its first line; empty: none is wanted.
  std::string passwordFile() const;

  // Of Radicale: another book of that name, and cards put into a book's folder, so that it seems to
  // have held them always. Cards are numbered from 0: card-0.vcf with the UID card-0 and the name
  // "Person 0".
  std::string addBook(const std::string& name);
  void fill(const std::string& book, std::size_t cards);
  // A file of that name in the book's folder, as it is.
  void put(const std::string& book, const std::string& file, const std::string& text);

 private:
  RealServer(Kind kind, std::filesystem::path folder, int port);
  void start();
  bool isUp();
  void stop();
  std::filesystem::path folderOf(const std::string& book) const;

  Kind kind_;
  std::filesystem::path folder_;
  int port_ = 0;
  pid_t process_ = -1;
};

// Skips the case where the server is not installed.
#define OX_START_OR_SKIP(server, kind)                          \
  const auto server = ::ox::support::RealServer::started(kind); \
  if (!(server)) GTEST_SKIP() << "no server"

}  // namespace ox::support
