// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/LoopbackClient.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/platform/http/CurlHttpTransportFixture.h"

// HTTPS with servers of OpenSSL, and both schemes through squid.

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using zt::test::LoopbackPort;
using zt::test::LoopbackResponse;
using zt::test::LoopbackServer;
using zt::test::ok;
using zt::test::redirect;
using zt::test::runProgram;
using zt::test::ScopedEnvironment;
using zt::test::Subprocess;
using zt::test::SubprocessOptions;
using zt::test::TemporaryFolder;

/// A certificate that signs itself, for a server at 127.0.0.1.
class Certificate {
 public:
  Certificate() {
    const zt::test::ProgramResult made = runProgram(
        "openssl", {"req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
                    "-nodes", "-keyout", key(), "-out", file(), "-days", "2", "-subj",
                    "/CN=" + _folder.path().substr(_folder.path().rfind('/') + 1), "-addext",
                    "subjectAltName=IP:127.0.0.1"});
    EXPECT_EQ(made.status, 0) << made.errors;
  }

  std::string key() const { return _folder.path("key.pem"); }
  std::string file() const { return _folder.path("certificate.pem"); }
  /// A folder with the certificate under the name by which OpenSSL looks for it.
  std::string folder() const {
    const std::string hash =
        runProgram("openssl", {"x509", "-hash", "-noout", "-in", file()}).output;
    const TemporaryFolder& all = _hashed;
    std::filesystem::copy_file(file(), all.path(hash.substr(0, hash.find('\n')) + ".0"),
                               std::filesystem::copy_options::skip_existing);
    return all.path();
  }

 private:
  TemporaryFolder _folder;
  TemporaryFolder _hashed;
};

/// An HTTPS server whose responses are files: "/there" is the response in the file "there".
class TlsServer {
 public:
  /// `options` are further ones of `openssl s_server`.
  explicit TlsServer(const Certificate& certificate, const std::string& options = "")
      : _server({"sh", "-c",
                 "cd \"$0\" && exec openssl s_server -accept 127.0.0.1:0 -cert \"$1\" "
                 "-key \"$2\" -HTTP " +
                     options,
                 _files.path(), certificate.file(), certificate.key()}) {
    // "ACCEPT 127.0.0.1:40123"
    while (const std::optional<std::string> line = _server.readLine()) {
      if (!line->starts_with("ACCEPT ")) continue;
      _port = line->substr(line->rfind(':') + 1);
      break;
    }
    respond("there", ok("over TLS"));
  }

  void respond(const std::string& name, const LoopbackResponse& response) {
    _files.write(name, response.bytes);
  }
  std::string url(const std::string& name, const std::string& host = "127.0.0.1") const {
    return "https://" + host + ":" + _port + "/" + name;
  }

 private:
  TemporaryFolder _files;
  Subprocess _server;
  std::string _port;
};

class CurlHttpTransportTls : public zt::test::CurlHttpTransportFixture {
 protected:
  Certificate certificate;
  TlsServer server{certificate};
  ScopedEnvironment file{"SSL_CERT_FILE", certificate.file().c_str()};
  ScopedEnvironment folder{"SSL_CERT_DIR", nullptr};
};

TEST_F(CurlHttpTransportTls, PrivateAuthoritiesOfTheEnvironmentCount) {
  const Certificate another;
  struct {
    const char* what;
    std::string file;
    std::string folder;
    bool isTrusted;
  } const rows[] = {
      {"no variable", "", "", false},
      {"the file", certificate.file(), "", true},
      {"the folder", "", certificate.folder(), true},
      {"another file", another.file(), "", false},
      {"another folder", "", another.folder(), false},
      {"another file and the folder", another.file(), certificate.folder(), true},
      {"the file and another folder", certificate.file(), another.folder(), true},
      {"a file that is missing", "/nowhere/authorities.pem", "", false},
  };
  for (const auto& row : rows) {
    const ScopedEnvironment fileOfRow("SSL_CERT_FILE", row.file.c_str());
    const ScopedEnvironment folderOfRow("SSL_CERT_DIR", row.folder.c_str());
    EXPECT_EQ(get(server.url("there")).body, row.isTrusted ? "over TLS" : "") << row.what;
    // The server has one client at a time.
    _transport.closeConnections();
  }
}

TEST_F(CurlHttpTransportTls, ACertificateForAnotherNameDoesNotCount) {
  EXPECT_EQ(get(server.url("there", "localhost")).status, 0);
}

TEST_F(CurlHttpTransportTls, ARedirectToHttpsIsFollowed) {
  LoopbackServer first({redirect("301 Moved Permanently", server.url("there"))});
  EXPECT_EQ(get(first.url("/")).body, "over TLS");
}

TEST_F(CurlHttpTransportTls, NoRedirectGoesBackToHttp) {
  LoopbackServer plain([this](const std::string& request) {
    return request.starts_with("GET /first ")
               ? redirect("301 Moved Permanently", server.url("back"))
               : ok("in the clear");
  });
  server.respond("back", redirect("302 Found", plain.url("/second")));
  EXPECT_EQ(get(server.url("back")).status, 0);
  EXPECT_EQ(plain.connections(), 0);
  EXPECT_EQ(get(plain.url("/first")).status, 0);
  EXPECT_THAT(plain.requests(), ElementsAre(HasSubstr("GET /first ")));
}

// The options of a host.

class CurlHttpTransportTlsOptions : public CurlHttpTransportTls {
 protected:
  CurlHttpTransportTlsOptions() { unsetenv("SSL_CERT_FILE"); }

  zt::HttpResponse getWith(const ZtTransportOptions& options, const std::string& url) {
    zt::HttpResponse response =
        _transport.exchange({url, "GET", {}, std::nullopt, std::chrono::seconds(20), &options});
    // The server has one client at a time.
    _transport.closeConnections();
    return response;
  }
  ZtTransportOptions trusting() const {
    ZtTransportOptions options;
    options.authorityFile = certificate.file();
    return options;
  }
};

TEST_F(CurlHttpTransportTlsOptions, AuthoritiesReplaceThoseOfTheSystemAndTheEnvironment) {
  const Certificate another;
  const struct {
    const char* what;
    std::string file;
    std::string folder;
    std::string variable;
    bool isTrusted;
  } rows[] = {
      {"none", "", "", "", false},
      {"the file", certificate.file(), "", "", true},
      {"the folder", "", certificate.folder(), "", true},
      {"another file", another.file(), "", certificate.file(), false},
      {"another folder", "", another.folder(), certificate.file(), false},
  };
  for (const auto& row : rows) {
    const ScopedEnvironment fileOfRow("SSL_CERT_FILE", row.variable.c_str());
    ZtTransportOptions options;
    options.authorityFile = row.file;
    options.authorityFolder = row.folder;
    const zt::HttpResponse response = getWith(options, server.url("there"));
    EXPECT_EQ(response.body, row.isTrusted ? "over TLS" : "") << row.what;
    EXPECT_EQ(response.error, row.isTrusted ? ZtDeliveryError::NoError : ZtDeliveryError::Tls)
        << row.what << ": " << response.message;
    EXPECT_EQ(response.times.tls.count() > 0, row.isTrusted) << row.what;
  }
}

/// An HTTPS server that keeps its connections, and responds with the client's port.
constexpr const char* kKeepingServer = R"(
import http.server, ssl, sys
class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    def do_GET(self):
        body = str(self.client_address[1]).encode()
        self.send_response(200)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)
    def log_message(self, *ignored):
        pass
context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
context.load_cert_chain(sys.argv[1], sys.argv[2])
server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
server.daemon_threads = True
server.socket = context.wrap_socket(server.socket, server_side=True, do_handshake_on_connect=False)
print(server.server_address[1], flush=True)
server.serve_forever()
)";

// The first connection was made with an authority that the last request does not trust.
TEST_F(CurlHttpTransportTlsOptions, AKeptConnectionIsNotUsedForOtherOptions) {
  Subprocess keeping({"python3", "-c", kKeepingServer, certificate.file(), certificate.key()});
  const std::string url = "https://127.0.0.1:" + keeping.readLine().value_or("0") + "/";
  const auto exchange = [&](const ZtTransportOptions& options) {
    return _transport.exchange({url, "GET", {}, std::nullopt, std::chrono::seconds(60), &options});
  };
  const zt::HttpResponse first = exchange(trusting());
  ASSERT_EQ(first.status, 200) << first.message;
  EXPECT_EQ(exchange(trusting()).body, first.body);

  const Certificate another;
  ZtTransportOptions asAnother = trusting();
  asAnother.clientCertificate = another.file();
  asAnother.clientKey = another.key();
  EXPECT_NE(exchange(asAnother).body, first.body);
  ZtTransportOptions distrusting;
  distrusting.authorityFile = another.file();
  EXPECT_EQ(exchange(distrusting).error, ZtDeliveryError::Tls);
}

TEST_F(CurlHttpTransportTlsOptions, TheServerMayAskForACertificate) {
  const Certificate client;
  const TemporaryFolder keys;
  const std::string encrypted = keys.path("encrypted.pem");
  ASSERT_EQ(runProgram("openssl", {"pkcs8", "-topk8", "-in", client.key(), "-out", encrypted,
                                   "-passout", "pass:secret"})
                .status,
            0);
  TlsServer strict(certificate, "-Verify 1 -verify_return_error -CAfile " + client.file());
  const struct {
    std::string certificate;
    std::string key;
    const char* password;
    bool isServed;
  } rows[] = {
      {"", "", "", false},
      {client.file(), client.key(), "", true},
      {client.file(), encrypted, "secret", true},
      {client.file(), encrypted, "wrong", false},
      // OpenSSL must not ask on the terminal.
      {client.file(), encrypted, "", false},
      {certificate.file(), certificate.key(), "", false},
  };
  for (const auto& row : rows) {
    ZtTransportOptions options = trusting();
    options.clientCertificate = row.certificate;
    options.clientKey = row.key;
    options.clientKeyPassword = row.password;
    const zt::HttpResponse response = getWith(options, strict.url("there"));
    EXPECT_EQ(response.body, row.isServed ? "over TLS" : "") << row.key << " " << row.password;
    EXPECT_THAT(response.message, testing::Not(HasSubstr("secret")));
  }
}

TEST_F(CurlHttpTransportTlsOptions, AnOldVersionOfTlsIsRefused) {
  TlsServer old(certificate, "-tls1_2");
  ZtTransportOptions options = trusting();
  for (const ZtTlsVersion version : {ZtTlsVersion::SystemDefault, ZtTlsVersion::Tls12}) {
    options.minimumTlsVersion = version;
    EXPECT_EQ(getWith(options, old.url("there")).body, "over TLS");
  }
  options.minimumTlsVersion = ZtTlsVersion::Tls13;
  EXPECT_EQ(getWith(options, old.url("there")).error, ZtDeliveryError::Tls);
  EXPECT_EQ(getWith(options, server.url("there")).body, "over TLS");
}

bool isAccepting(int port) try {
  const zt::test::RawClient client(port);
  return true;
} catch (const std::runtime_error&) {
  return false;
}

/// squid on a loopback port, with the user "ada" and the password "s3cret/".
class Squid {
 public:
  /// `access` are lines of its configuration; the acl "known" means its users.
  explicit Squid(const std::string& access) {
    // squid runs as another user if root starts it.
    std::filesystem::permissions(_folder.path(), std::filesystem::perms::all);
    const std::string password = runProgram("openssl", {"passwd", "-apr1", "s3cret/"}).output;
    const std::string users = _folder.write("users", "ada:" + password);
    // Another process may take the port before squid does.
    for (int attempt = 0; attempt < 5 && !_squid; ++attempt) {
      _port = LoopbackPort(LoopbackPort::Refuses).number();
      start(_folder.write("squid.conf",
                          "http_port 127.0.0.1:" + std::to_string(_port) +
                              "\nauth_param basic program /usr/lib/squid/basic_ncsa_auth " + users +
                              "\nacl known proxy_auth REQUIRED\n" + access +
                              "\nvisible_hostname localhost\ncoredump_dir " + _folder.path() +
                              "\ncache deny all\naccess_log none\ncache_log /dev/null\n"
                              "pid_filename none\nnetdb_filename none\npinger_enable off\n"
                              "max_filedescriptors 256\n"));
    }
  }
  Squid(const Squid&) = delete;
  Squid& operator=(const Squid&) = delete;
  ~Squid() {
    // An orderly end takes two seconds.
    if (_squid) _squid->signal(SIGKILL);
  }

  bool isRunning() const { return _squid.has_value(); }
  /// Its URL; `user` is empty or ends with "@".
  std::string url(const std::string& user = "") const {
    return "http://" + user + "127.0.0.1:" + std::to_string(_port);
  }

 private:
  void start(const std::string& configuration) {
    _squid.emplace(std::vector<std::string>{
        "sh", "-c", "PATH=$PATH:/usr/sbin; exec squid -N -n zt$$ -d 1 -f \"$0\" 2>&1",
        configuration});
    // squid writes this when the port is its own, but before it listens.
    std::optional<std::string> line;
    do {
      line = _squid->readLine();
    } while (line && line->find("Accepting HTTP Socket connections") == std::string::npos);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (line && !isAccepting(_port)) {
      if (std::chrono::steady_clock::now() > end) line.reset();
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (!line) _squid.reset();
  }

  TemporaryFolder _folder;
  int _port = 0;
  std::optional<Subprocess> _squid;
};

// Requests with http are passed on, those with https go through a tunnel (CONNECT).
TEST_F(CurlHttpTransportTlsOptions, SquidPassesOnWhatItsRulesAllow) {
  if (runProgram("sh", {"-c", "PATH=$PATH:/usr/sbin; command -v squid"}).status != 0) {
    GTEST_SKIP() << "squid is not installed";
  }
  const Squid open("http_access allow all");
  const Squid closed("http_access deny all");
  const Squid withUsers("http_access allow known");
  LoopbackServer plain([](const std::string&) { return ok("in the clear"); });
  const struct {
    const Squid& squid;
    const char* user;
    int status;  ///< of the proxy; 200 if it passes the request on
  } rows[] = {
      {open, "", 200},
      {closed, "", 403},
      {withUsers, "", 407},
      {withUsers, "ada:s3cret%2F@", 200},
      {withUsers, "ada:wrong@", 407},
  };
  std::size_t passed = 0;
  for (const auto& [squid, user, status] : rows) {
    ASSERT_TRUE(squid.isRunning());
    SCOPED_TRACE(user + std::to_string(status));
    ZtTransportOptions options = trusting();
    options.proxy = squid.url(user);
    const zt::HttpResponse http = getWith(options, plain.url("/"));
    EXPECT_EQ(http.status, status) << http.message;
    if (status == 200) ++passed;
    EXPECT_THAT(plain.requests(), testing::SizeIs(passed));

    const zt::HttpResponse https = getWith(options, server.url("there"));
    EXPECT_EQ(https.body, status == 200 ? "over TLS" : "");
    EXPECT_EQ(https.error, status == 200 ? ZtDeliveryError::NoError : ZtDeliveryError::Proxy)
        << https.message;
    EXPECT_THAT(https.message, testing::Not(HasSubstr("s3cret")));
  }
  EXPECT_THAT(plain.requests().at(0), HasSubstr("\r\nVia: "));
}

}  // namespace
