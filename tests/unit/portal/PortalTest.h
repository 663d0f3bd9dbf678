// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/Printing.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/ZtTestAccess.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/platform/FakePlatform.h"
#include "ztportal/portal/ZtPortalData.h"
#include "ztportal/system/ZtHost.h"

namespace zt::test {

inline constexpr const char* kConfigurationUrl = "http://config.test/reporting/kelvane.xml";
inline constexpr const char* kApplicationId = "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}";
inline constexpr const char* kReports = "/home/user/.local/share/Kelvane/Setup/reports";
inline constexpr const char* kLocalCopy = "(null)configuration.xml";

inline constexpr const char* kAccepted =
    "<SOAP-ENV:Envelope><SOAP-ENV:Body><ns1:postPoolDatasResponse><return>TRUE</return>"
    "</ns1:postPoolDatasResponse></SOAP-ENV:Body></SOAP-ENV:Envelope>";
inline constexpr const char* kRefused =
    "<SOAP-ENV:Envelope><SOAP-ENV:Body><ns1:postPoolDatasResponse><return>FALSE</return>"
    "</ns1:postPoolDatasResponse></SOAP-ENV:Body></SOAP-ENV:Envelope>";

// Entries of PortalTest::steps.
inline constexpr const char* kGet = "GET http://config.test/reporting/kelvane.xml";
inline constexpr const char* kVersion = "version http://report.test/soap";
inline constexpr const char* kReport = "report http://report.test/soap";
inline constexpr const char* kBroadcast = "broadcast";

/// An exception that the library does not handle.
struct ForeignError : std::runtime_error {
  ForeignError() : std::runtime_error("foreign") {}
};

[[noreturn]] inline void throwZtException() { throw ZtException("PLATFORM", "of a test"); }
[[noreturn]] inline void throwForeign() { throw ForeignError(); }

/// Uses the files of another object. The observer is called before each operation, with "read /a"
/// or "write /a", and may throw. It does not see the look for the user's consent, which comes
/// before everything else.
class ObservedFiles final : public Files {
 public:
  using Observer = std::function<void(const std::string& operation)>;

  /// Does not own `files`.
  ObservedFiles(Files& files, Observer observer) : _files(files), _observer(std::move(observer)) {}

  bool exists(const std::string& path) override {
    return (path.ends_with("/consent") ? _files : observed("exists ", path)).exists(path);
  }
  bool isFolder(const std::string& path) override {
    return observed("isFolder ", path).isFolder(path);
  }
  bool createFolders(const std::string& path) override {
    return observed("createFolders ", path).createFolders(path);
  }
  bool createPrivateFolders(const std::string& path) override {
    return observed("createFolders ", path).createPrivateFolders(path);
  }
  std::optional<std::vector<std::string>> list(const std::string& folder) override {
    return observed("list ", folder).list(folder);
  }
  std::optional<std::string> read(const std::string& path, std::size_t limit) override {
    return observed("read ", path).read(path, limit);
  }
  bool write(const std::string& path, std::string_view content) override {
    return observed("write ", path).write(path, content);
  }
  bool writePrivate(const std::string& path, std::string_view content) override {
    return observed("write ", path).writePrivate(path, content);
  }
  bool replacePrivate(const std::string& path, std::string_view content) override {
    return observed("write ", path).replacePrivate(path, content);
  }
  bool remove(const std::string& path) override { return observed("remove ", path).remove(path); }
  std::optional<FileFacts> facts(const std::string& path) override {
    return observed("facts ", path).facts(path);
  }
  bool move(const std::string& from, const std::string& to) override {
    return observed("move ", from).move(from, to);
  }
  FileLock lock(const std::string& path) override { return observed("lock ", path).lock(path); }

 private:
  Files& observed(const char* operation, const std::string& path) {
    _observer(operation + path);
    return _files;
  }

  Files& _files;
  Observer _observer;
};

/// The host "Setup" 2.1 on a fake machine, whose configuration server and reporting server respond
/// as the members say. `steps` records what happened, in order: "GET <url>", "version <url>",
/// "report <url>" and "broadcast".
class PortalTest : public ::testing::Test {
 protected:
  PortalTest() {
    ZtHost::setBundleInfo({{"CFBundleName", "Setup"}, {"CFBundleShortVersionString", "2.1"}});
    platform.http_.answer = [this](const auto& asked) { return responseTo(asked); };
    platform.broadcast_.onPost = [this] { steps.emplace_back(kBroadcast); };
  }

  /// Creates a document with the servers as they are, and clears the recorded steps.
  std::shared_ptr<ZtPortalData> makeDocument(const ZtString& customerId = "Kelvane",
                                             bool cacheConfiguration = false) {
    auto document = ZtPortalData::initWithValues(kConfigurationUrl, cacheConfiguration, customerId,
                                                 kApplicationId, "2.1.77");
    forget();
    return document;
  }
  std::shared_ptr<ZtPortalData> makeDocumentWithPool(const ZtString& customerId = "Kelvane",
                                                     bool cacheConfiguration = false) {
    auto document = makeDocument(customerId, cacheConfiguration);
    document->addPool("CUSTOM", ZtDate());
    return document;
  }

  static std::string requestOf(const ZtPortalData& document) {
    return document.generateXml(nullptr, true);
  }
  /// The same text with another customer ID.
  static std::string requestOf(const ZtPortalData& document, const std::string& customerId) {
    std::string request = requestOf(document);
    const std::size_t start = request.find('>', request.find("<CustomerID")) + 1;
    return request.replace(start, request.find("</CustomerID>") - start, customerId);
  }

  void forget() {
    steps.clear();
    platform.http_.asked.clear();
    platform.broadcast_.posted.clear();
  }

  void cutOff() { configuration = version = report = HttpResponse{}; }

  /// Replaces the files by ones that call `observer`.
  void observeFiles(ObservedFiles::Observer observer) {
    _observed = std::make_unique<ObservedFiles>(platform.files_, std::move(observer));
    platform.replacedFiles = _observed.get();
  }
  std::string inStore(const std::string& name) { return std::string(kReports) + "/" + name; }
  std::vector<std::string> namesInStore() {
    return platform.files_.list(kReports).value_or(std::vector<std::string>());
  }

  ScopedEnvironment zone{"TZ", "UTC"};
  ScopedEnvironment locale{"LC_ALL", "C"};
  FakePlatform platform;
  HttpResponse configuration{200,
                             "<configuration><defSOAP>http://report.test/soap</defSOAP>"
                             "<defTestSOAP>http://report.test/soap-test</defTestSOAP>"
                             "</configuration>"};
  HttpResponse version{200, "<versioninfo>7.1</versioninfo>"};
  HttpResponse report{200, kAccepted};
  std::string refusedBody = "none";  // a report that is refused whatever `report` is
  std::vector<std::string> steps;

 private:
  HttpResponse responseTo(const FakeHttpTransport::Asked& asked) {
    if (!asked.body) {
      steps.push_back("GET " + asked.url);
      return configuration;
    }
    if (asked.body->find("<getVersionInfo") != std::string::npos) {
      steps.push_back("version " + asked.url);
      return version;
    }
    steps.push_back("report " + asked.url);
    return *asked.body == refusedBody ? HttpResponse{200, kRefused} : report;
  }

  std::unique_ptr<ObservedFiles> _observed;
};

}  // namespace zt::test
