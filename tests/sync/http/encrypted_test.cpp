// Certificates, with a server of TLS and authorities that are made for the run.
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/second_process.hpp"
#include "tests/sync/http/asked.hpp"

namespace ox::sync {
namespace {

using support::fileBytes;
using support::RunningProcess;
using support::runProcess;
using support::temporaryPath;

constexpr const char* kServer = R"(
import http.server, ssl, sys
class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    def answer(self):
        asked = self.connection.getpeercert() or {}
        names = [value for row in asked.get("subject", ()) for key, value in row]
        with open(sys.argv[1] + ".log", "a") as log:
            log.write("%s %s %s\n" % (self.command, self.path, self.headers.get("Authorization", "-")))
        body = ("hello " + ",".join(names)).encode()
        if self.path.startswith("/to/"):
            self.send_response(302)
            self.send_header("Location", self.path[4:])
        else:
            self.send_response(200)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)
    do_GET = answer
    def log_message(self, *arguments):
        pass
context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
context.load_cert_chain(sys.argv[1] + ".pem")
if len(sys.argv) > 2:
    context.verify_mode = ssl.CERT_OPTIONAL
    context.load_verify_locations(sys.argv[2])
server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
server.socket = context.wrap_socket(server.socket, server_side=True)
with open(sys.argv[1] + ".port", "w") as port:
    port.write(str(server.server_address[1]))
print("open", flush=True)
server.serve_forever()
)";

void openssl(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "/usr/bin/openssl");
  const auto result = runProcess(arguments);
  if (result.exitCode != 0) throw std::runtime_error(result.errors);
}

std::string path(const std::string& name) {
  return temporaryPath(name).string();
}

// NAME.pem: a key and its certificate, of an authority or signed by one of that name.
void makeCertificate(const std::string& name, const std::string& subject,
                     const std::string& authority = {}, const std::string& names = {}) {
  std::vector<std::string> words = {"req",
                                    "-x509",
                                    "-newkey",
                                    "ec",
                                    "-pkeyopt",
                                    "ec_paramgen_curve:prime256v1",
                                    "-nodes",
                                    "-days",
                                    "30",
                                    "-subj",
                                    "/CN=" + subject,
                                    "-keyout",
                                    path(name + ".key"),
                                    "-out",
                                    path(name + ".crt")};
  if (!names.empty()) words.insert(words.end(), {"-addext", "subjectAltName=" + names});
  if (!authority.empty()) {
    words.insert(words.end(), {"-CA", path(authority + ".crt"), "-CAkey", path(authority + ".key"),
                               "-addext", "basicConstraints=critical,CA:FALSE"});
  }
  openssl(words);
  std::ofstream(path(name + ".pem"))
      << fileBytes(path(name + ".key")) << fileBytes(path(name + ".crt"));
}

// A server with that certificate; clients may show one that the authority has signed.
class TlsServer {
 public:
  explicit TlsServer(const std::string& name, const std::string& authority = {}) : name_(name) {
    std::filesystem::remove(path(name + ".log"));
    std::vector<std::string> command = {"/usr/bin/python3", "-c", kServer, path(name)};
    if (!authority.empty()) command.push_back(path(authority + ".crt"));
    process_ = std::make_unique<RunningProcess>(command);
    if (!process_->waitForOutput("open\n")) throw std::runtime_error("no server of TLS");
  }
  TlsServer(const TlsServer&) = delete;
  TlsServer& operator=(const TlsServer&) = delete;
  ~TlsServer() { process_->signal(SIGKILL); }

  std::string place() const { return "127.0.0.1:" + fileBytes(path(name_ + ".port")); }
  std::string url(const std::string& target = "/") const { return "https://" + place() + target; }
  // A line for each request: method, target, Authorization.
  std::string log() const { return fileBytes(path(name_ + ".log")); }

 private:
  std::string name_;
  std::unique_ptr<RunningProcess> process_;
};

class Encrypted : public testing::Test {
 protected:
  Encrypted() {
    makeCertificate("authority", "Our authority");
    makeCertificate("server", "server", "authority", "IP:127.0.0.1");
  }

  static LoginSettings login(const TlsServer& server) {
    LoginSettings login;
    login.url = server.url();
    login.authorities = path("authority.crt");
    return login;
  }
  static std::string failure(const LoginSettings& login) {
    HttpClient client(login, {}, shortPauses());
    return failureOf([&] { client.send(get(login.url)); });
  }
};

TEST_F(Encrypted, IsTrustedByTheAuthorityThatTheLoginNames) {
  const TlsServer server("server");
  HttpClient client(login(server), {});
  EXPECT_EQ(client.send(get(server.url())).body, "hello ");
  EXPECT_EQ(client.send(get(server.url("/again"))).body, "hello ");
  EXPECT_EQ(server.log(), "GET / -\nGET /again -\n");
}

TEST_F(Encrypted, IsNotTrustedByAnUnknownAuthority) {
  const TlsServer server("server");
  auto unknown = login(server);
  unknown.authorities.clear();
  const auto expected =
      "Insecure: the certificate of " + server.place() + " cannot be trusted: SSL certificate";
  EXPECT_EQ(failure(unknown).substr(0, expected.size()), expected);
  // It does not help that http is allowed.
  unknown.allowHttp = true;
  EXPECT_EQ(failure(unknown).substr(0, expected.size()), expected);
  // Nor that there is another authority.
  makeCertificate("stranger", "Another authority");
  unknown.authorities = path("stranger.crt");
  EXPECT_EQ(failure(unknown).substr(0, expected.size()), expected);
  EXPECT_EQ(server.log(), "");
}

TEST_F(Encrypted, IsNotTrustedUnderAnotherName) {
  makeCertificate("other", "127.0.0.1", "authority", "DNS:cards.example");
  const TlsServer server("other");
  const auto expected = "Insecure: the certificate of " + server.place() + " cannot be trusted: ";
  EXPECT_EQ(failure(login(server)).substr(0, expected.size()), expected);
  EXPECT_EQ(server.log(), "");
}

TEST_F(Encrypted, NeedsItsFiles) {
  const TlsServer server("server");
  auto missing = login(server);
  missing.authorities = path("nowhere.crt");
  const auto expected = "Usage: " + server.place() + " cannot be asked: ";
  EXPECT_EQ(failure(missing).substr(0, expected.size()), expected);
  missing = login(server);
  missing.clientCertificate = path("nowhere.pem");
  EXPECT_EQ(failure(missing).substr(0, expected.size()), expected);
  EXPECT_EQ(server.log(), "");
}

TEST_F(Encrypted, ShowsTheCertificateOfTheUserToItsOwnPlaceAlone) {
  makeCertificate("ann", "Ann", "authority");
  makeCertificate("elsewhere", "elsewhere", "authority", "IP:127.0.0.1");
  const TlsServer server("server", "authority");
  const TlsServer elsewhere("elsewhere", "authority");
  auto settings = login(server);
  settings.clientCertificate = path("ann.pem");
  HttpClient client(settings, {});
  EXPECT_EQ(client.send(get(server.url())).body, "hello Ann");
  const auto answer = client.send(get(server.url("/to/" + elsewhere.url("/x"))));
  EXPECT_EQ(answer.url, elsewhere.url("/x"));
  EXPECT_EQ(answer.body, "hello ");
  EXPECT_EQ(client.send(get(server.url())).body, "hello Ann");
  client.accept(elsewhere.url());
  EXPECT_EQ(client.send(get(elsewhere.url("/y"))).body, "hello Ann");
}

TEST_F(Encrypted, IsNotLeftByARedirect) {
  ScriptedServer plain;
  const TlsServer server("server");
  auto settings = login(server);
  settings.allowHttp = true;
  HttpClient client(settings, {});
  EXPECT_EQ(
      failureOf([&] { client.send(get(server.url("/to/" + plain.url()))); }),
      "Insecure: " + server.place() + " leads to " + place(plain) + ", where nothing is encrypted");
  EXPECT_EQ(plain.connections(), 0U);
}

TEST_F(Encrypted, TellsOfAServerThatSpeaksNoTls) {
  ScriptedServer plain;
  plain.answer([](const ScriptedRequest&) -> ScriptedAnswer { return {}; });
  LoginSettings settings;
  settings.url = "https://" + place(plain);
  HttpClient client(settings, {});
  EXPECT_EQ(failureOf([&] { client.send(get(settings.url)); }),
            "Insecure: " + place(plain) +
                " does not speak TLS; if it is meant to be asked in the " +
                "clear, its URL is http://" + place(plain));
  EXPECT_EQ(plain.connections(), 1U);
}

TEST_F(Encrypted, TakesOverFromHttpByARedirect) {
  ScriptedServer plain;
  const TlsServer server("server");
  plain.answer([&](const ScriptedRequest&) -> ScriptedAnswer {
    return {.status = 308, .headers = {{"Location", server.url("/there")}}};
  });
  auto settings = login(server);
  settings.url = plain.url();
  settings.allowHttp = true;
  HttpClient client(settings, {});
  const auto answer = client.send(get(plain.url()));
  EXPECT_EQ(answer.body, "hello ");
  EXPECT_EQ(answer.movedTo, server.url("/there"));
}

}  // namespace
}  // namespace ox::sync
