// SPDX-License-Identifier: Apache-2.0
#include "tools/ztreport/network/Certificates.h"

#include <algorithm>
#include <ctime>
#include <string_view>
#include <vector>

#include "tools/ztreport/network/CurlHandle.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

namespace {

struct Certificate {
  std::string subject;
  std::string issuer;
  std::string names;  // "DNS:a.example, IP Address:127.0.0.1"
  std::string validFrom;
  std::string validUntil;
};

/// Connects to `server` without a request.
CURLcode connect(CurlHandle& handle, const WebAddress& server) {
  handle.set(CURLOPT_URL, server.shown.c_str());
  handle.set(CURLOPT_CONNECT_ONLY, 1L);
  handle.set(CURLOPT_SSL_VERIFYHOST, 0L);
  return handle.perform();
}

Certificate certificateIn(const curl_slist* line) {
  Certificate certificate;
  for (; line != nullptr; line = line->next) {
    const std::string_view text(line->data);
    const auto take = [text](std::string_view name, std::string& value) {
      if (text.starts_with(name)) value = text.substr(name.size());
    };
    take("Subject:", certificate.subject);
    take("Issuer:", certificate.issuer);
    take("X509v3 Subject Alternative Name:", certificate.names);
    take("Start date:", certificate.validFrom);
    take("Expire date:", certificate.validUntil);
  }
  return certificate;
}

/// The certificates that the server sends, its own first.
std::vector<Certificate> certificatesOf(const WebAddress& server) {
  std::vector<Certificate> certificates;
  CurlHandle handle;
  handle.set(CURLOPT_SSL_VERIFYPEER, 0L);
  handle.set(CURLOPT_CERTINFO, 1L);
  if (connect(handle, server) != CURLE_OK) return certificates;
  const auto* const info = handle.get<const curl_certinfo*>(CURLINFO_CERTINFO);
  for (int i = 0; info != nullptr && i < info->num_of_certs; ++i) {
    certificates.push_back(certificateIn(info->certinfo[i]));
  }
  return certificates;
}

/// Whether the certificate is valid for some host.
bool isTrusted(const WebAddress& server) {
  CurlHandle handle;
  return connect(handle, server) == CURLE_OK;
}

/// What certificates are checked with.
std::string trustedText() {
  const CurlHandle handle;
  const std::string given = ZtHost::transportOptions().authorityFile;
  const auto text = [&handle](const char* variable, CURLINFO standard) -> std::string {
    if (const char* const value = valueOf(variable)) {
      return std::string(value) + " (" + variable + ")";
    }
    const char* const path = handle.get<const char*>(standard);
    return path != nullptr ? path : "of the system";
  };
  return "the CA file " +
         (given.empty() ? text(kFileVariable, CURLINFO_CAINFO) : given + " (--ca)") +
         " and the CA folder " + text(kFolderVariable, CURLINFO_CAPATH);
}

std::string described(const Certificate& certificate) {
  return certificate.subject + ", issued by " + certificate.issuer + ", valid until " +
         certificate.validUntil + "; checked with " + trustedText();
}

}  // namespace

Fault certificateFault(const WebAddress& server, const std::string& problem) {
  const std::vector<Certificate> certificates = certificatesOf(server);
  if (certificates.empty()) return {problem, ""};
  const std::string place = server.host + ":" + std::to_string(server.port);
  const std::string whose = "the certificate of " + place;
  const std::time_t now = std::time(nullptr);

  const auto expired = std::ranges::find_if(certificates, [now](const Certificate& certificate) {
    const std::time_t end = curl_getdate(certificate.validUntil.c_str(), nullptr);
    return end != -1 && end < now;
  });
  if (expired != certificates.end()) {
    return {whose + " has expired: " + described(*expired),
            "renew the server's certificate, or correct this machine's clock"};
  }
  const Certificate& own = certificates.front();
  if (curl_getdate(own.validFrom.c_str(), nullptr) > now) {
    return {whose + " is valid only from " + own.validFrom + ": " + described(own),
            "correct this machine's clock"};
  }
  if (isTrusted(server)) {
    return {whose + " is for " + (own.names.empty() ? own.subject : own.names) + ", not for " +
                server.host + ": " + described(own),
            "use a host name of the certificate in the URL, or give the server a certificate for " +
                server.host};
  }
  return {whose + " has an issuer that is not trusted (" + problem + "): " + described(own),
          "if you trust the issuer, set SSL_CERT_FILE to a file with its certificate (PEM), or add "
          "it to the certificates of the system"};
}

}  // namespace zt::tools
