// SPDX-License-Identifier: Apache-2.0
#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/integration/ztreport/DoctorTest.h"
#include "tests/support/LoopbackServer.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"

// What doctor finds out about servers with https, which are those of `openssl s_server`.

namespace zt::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// A certificate authority of the test's own, with certificates for servers.
class Authority {
 public:
  Authority() {
    _folder.write("ca.cnf",
                  "[ca]\ndefault_ca = all\n"
                  "[all]\ndatabase = index\nserial = serial\nnew_certs_dir = .\n"
                  "default_md = sha256\npolicy = names\ncopy_extensions = copy\n"
                  "[names]\ncommonName = supplied\n");
    _folder.write("index", "");
    _folder.write("serial", "01\n");
    openssl("req -x509 " + newKey("ca") + " -out ca.pem -days 30 -subj '/CN=Test CA'");
  }

  /// Makes `name`.pem and `name`.key for a server with this alternative name. The dates are of the
  /// form "20200101000000Z".
  void certify(const std::string& name, const std::string& server, const std::string& from,
               const std::string& until) const {
    openssl("req " + newKey(name) + " -out " + name + ".csr -subj /CN=" + name +
            " -addext subjectAltName=" + server);
    openssl("ca -batch -config ca.cnf -cert ca.pem -keyfile ca.key -in " + name + ".csr -out " +
            name + ".pem -startdate " + from + " -enddate " + until);
  }

  std::string file(const std::string& name) const { return _folder.path(name); }
  void write(const std::string& name, const std::string& content) const {
    _folder.write(name, content);
  }

 private:
  static std::string newKey(const std::string& name) {
    return "-newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout " + name + ".key";
  }
  void openssl(const std::string& arguments) const {
    const auto result =
        runProgram("/bin/sh", {"-c", "cd '" + _folder.path() + "' && openssl " + arguments});
    if (result.status != 0) throw std::runtime_error(result.errors);
  }

  TemporaryFolder _folder;
};

/// A server on a free port of the loopback interface, with the files in the folder of `authority`.
class TlsServer {
 public:
  TlsServer(const Authority& authority, const std::string& name)
      : _server({"/bin/sh", "-c",
                 "cd '" + authority.file("") + "' && exec openssl s_server -accept 127.0.0.1:0 " +
                     "-WWW -cert " + name + ".pem -key " + name + ".key"}) {
    constexpr std::string_view kListens = "ACCEPT ";
    while (const auto line = _server.readLine()) {
      if (!line->starts_with(kListens)) continue;
      _host = line->substr(kListens.size());
      return;
    }
    throw std::runtime_error(_server.waitForErrors());
  }

  const std::string& host() const { return _host; }
  std::string url() const { return "https://" + _host + "/kelvane.xml"; }

 private:
  Subprocess _server;
  std::string _host;
};

class DoctorCertificateTest : public DoctorTest {};

// doctor once repeated libcurl's words, which name neither the certificate nor what it was checked
// with.
TEST_F(DoctorCertificateTest, SaysWhatIsWrongWithACertificate) {
  const std::string from = "20260101000000Z";
  const std::string until = "20990101000000Z";
  const Authority authority;
  const Authority other;
  authority.certify("expired", "IP:127.0.0.1", "20200101000000Z", "20210101000000Z");
  authority.certify("early", "IP:127.0.0.1", "20980101000000Z", until);
  authority.certify("elsewhere", "DNS:reports.example", from, until);
  other.certify("stranger", "IP:127.0.0.1", from, until);

  program.setVariable("SSL_CERT_FILE=" + authority.file("ca.pem"));
  const struct {
    const Authority* authority;
    std::string name;
    std::string reason;
    std::string validUntil;
    std::string remedy;
  } rows[] = {
      {&authority, "expired", " has expired", "Jan  1 00:00:00 2021 GMT",
       "renew the server's certificate, or correct this machine's clock"},
      {&authority, "early", " is valid only from Jan  1 00:00:00 2098 GMT",
       "Jan  1 00:00:00 2099 GMT", "correct this machine's clock"},
      {&authority, "elsewhere", " is for DNS:reports.example, not for 127.0.0.1",
       "Jan  1 00:00:00 2099 GMT",
       "use a host name of the certificate in the URL, or give the server a certificate for "
       "127.0.0.1"},
      {&other, "stranger",
       " has an issuer that is not trusted (SSL certificate problem: unable to get local issuer "
       "certificate)",
       "Jan  1 00:00:00 2099 GMT",
       "if you trust the issuer, set SSL_CERT_FILE to a file with its certificate (PEM), or add it "
       "to the certificates of the system"},
  };
  for (const auto& row : rows) {
    const TlsServer server(*row.authority, row.name);
    const std::string finding = examine(server.url()).findings.at("configuration");
    EXPECT_THAT(finding,
                StartsWith("failed: the certificate of " + server.host() + row.reason +
                           ": CN = " + row.name + ", issued by CN = Test CA, valid until " +
                           row.validUntil + "; checked with the CA file " +
                           authority.file("ca.pem") + " (SSL_CERT_FILE) and the CA folder /"));
    EXPECT_THAT(finding, testing::EndsWith(" -> " + row.remedy));
  }
}

TEST_F(DoctorCertificateTest, PassesWithACertificateOfAPrivateAuthority) {
  const ReportingServer reporting;
  const Authority authority;
  authority.certify("server", "IP:127.0.0.1", "20260101000000Z", "20990101000000Z");
  authority.write("kelvane.xml", reporting.healthyBody(RequestKind::Configuration));
  const TlsServer server(authority, "server");
  EXPECT_EQ(examine(server.url()).status, 1);
  program.setVariable("SSL_CERT_FILE=" + authority.file("ca.pem"));
  const Diagnosis diagnosis = examine(server.url());
  EXPECT_EQ(diagnosis.status, 0);
  EXPECT_EQ(diagnosis.findings.at("configuration"), "ok: read");
  EXPECT_EQ(diagnosis.findings.at("version answer"), "ok: 7.3");
}

TEST_F(DoctorCertificateTest, NamesTheCertificatesOfTheSystemOrOfTheFolder) {
  const Authority authority;
  authority.certify("server", "IP:127.0.0.1", "20260101000000Z", "20990101000000Z");
  const TlsServer server(authority, "server");
  EXPECT_THAT(examine(server.url()).findings.at("configuration"),
              HasSubstr("; checked with the CA file /etc/"));
  program.setVariable("SSL_CERT_DIR=" + program.folder());
  EXPECT_THAT(examine(server.url()).findings.at("configuration"),
              HasSubstr(" and the CA folder " + program.folder() + " (SSL_CERT_DIR) -> "));
}

TEST_F(DoctorCertificateTest, TrustsTheAuthoritiesThatAnOptionNames) {
  const Authority authority;
  const Authority other;
  authority.certify("server", "IP:127.0.0.1", "20260101000000Z", "20990101000000Z");
  const TlsServer server(authority, "server");
  program.setVariable("SSL_CERT_FILE=" + program.path("absent.pem"));
  const auto finding = [&](const Authority& trusted) {
    return examine(server.url(), {"--ca", trusted.file("ca.pem")}).findings.at("configuration");
  };
  EXPECT_THAT(finding(authority), testing::Not(HasSubstr("certificate")));
  EXPECT_THAT(finding(other),
              HasSubstr("; checked with the CA file " + other.file("ca.pem") + " (--ca) and"));
}

TEST_F(DoctorCertificateTest, SaysWhenTheFileOfCertificatesCannotBeRead) {
  const Authority authority;
  authority.certify("server", "IP:127.0.0.1", "20260101000000Z", "20990101000000Z");
  const TlsServer server(authority, "server");
  program.setVariable("SSL_CERT_FILE=" + program.path("absent.pem"));
  const std::string finding = examine(server.url()).findings.at("configuration");
  EXPECT_THAT(finding, HasSubstr(program.path("absent.pem")));
  EXPECT_THAT(finding,
              testing::EndsWith(" -> correct SSL_CERT_FILE and SSL_CERT_DIR, or unset them"));
}

}  // namespace
}  // namespace zt::test
