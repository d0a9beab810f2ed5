#include "tests/sync/support/tls_server.hpp"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <vector>

#include "tests/support/store_environment.hpp"

namespace ox::support {
namespace {

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

}  // namespace

void makeCertificate(const std::string& name, const std::string& subject,
                     const std::string& authority, const std::string& names) {
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

TlsServer::TlsServer(const std::string& name, const std::string& authority) : name_(name) {
  std::filesystem::remove(path(name + ".log"));
  std::vector<std::string> command = {"/usr/bin/python3", "-c", kServer, path(name)};
  if (!authority.empty()) command.push_back(path(authority + ".crt"));
  process_ = std::make_unique<RunningProcess>(command);
  if (!process_->waitForOutput("open\n")) throw std::runtime_error("no server of TLS");
}

TlsServer::~TlsServer() {
  process_->signal(SIGKILL);
}

std::string TlsServer::place() const {
  return "127.0.0.1:" + fileBytes(path(name_ + ".port"));
}

std::string TlsServer::log() const {
  return fileBytes(path(name_ + ".log"));
}

}  // namespace ox::support
