#include "tools/ztreport/Commands.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>

#include "tools/ztreport/Description.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

namespace {

std::string nameOf(const std::string& file) { return file == "-" ? "standard input" : file; }

std::optional<std::string> contentOf(std::istream& stream) {
  std::string content{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  if (stream.bad()) return std::nullopt;
  return content;
}

std::string readAll(const std::string& file) {
  if (file == "-") {
    if (auto content = contentOf(std::cin)) return *content;
    throw Failure(Exit::MachineFailed, nameOf(file) + ": cannot be read");
  }
  errno = 0;
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw Failure(Exit::MachineFailed, file + ": " + std::strerror(errno));
  std::error_code ignored;
  if (std::filesystem::is_directory(file, ignored)) {
    throw Failure(Exit::MachineFailed, file + ": " + std::strerror(EISDIR));
  }
  if (auto content = contentOf(stream)) return *content;
  throw Failure(Exit::MachineFailed, file + ": cannot be read");
}

Description describe(const std::string& file) try {
  return Description(readAll(file));
} catch (const JsonError& error) {
  throw Failure(Exit::WrongInput, nameOf(file) + ": " + error.what());
}

Description describeForDelivery(const std::string& file) {
  Description description = describe(file);
  if (description.hasPools()) return description;
  throw Failure(Exit::WrongInput,
                nameOf(file) + ": /pools: a report without a pool has no text to deliver");
}

void print(const std::string& text) {
  std::cout << text << std::flush;
  if (!std::cout) throw Failure(Exit::MachineFailed, "standard output cannot be written");
}

std::string path(const ZtString& text) { return std::string(text.view()); }

std::string storeFolder() {
  const ZtString folder = ZtPortalData::reportFolder();
  if (folder.isNull()) throw Failure(Exit::MachineFailed, "the store's folder cannot be created");
  return path(folder);
}

/// The library saves in silence, so the file itself has to show that all of it is there.
bool isSaved(ZtPortalData& document) {
  std::ifstream stream(path(document.reportFile()), std::ios::binary);
  return stream && contentOf(stream) == document.getSoapString();
}

std::size_t savedReports(const std::string& folder) {
  std::error_code error;
  std::filesystem::directory_iterator entries(folder, error);
  if (error) throw Failure(Exit::MachineFailed, folder + ": " + error.message());
  return static_cast<std::size_t>(std::count_if(begin(entries), end(entries),
                                                [](const std::filesystem::directory_entry& entry) {
                                                  return entry.path().native().ends_with(".ztr");
                                                }));
}

std::string whyNotAccepted(const ZtPortalData& document) {
  const std::string url(document.configurationUrl().view());
  if (!document.gotConfiguration()) return "no configuration at " + url;
  if (!document.online()) return "no answer from " + std::string(document.reportUrl().view());
  return "refused by " + std::string(document.reportUrl().view());
}

}  // namespace

Exit render(const std::string& file, bool plain) {
  const auto document = describe(file).makeOffline();
  print(plain ? document->generateXml(nullptr, false) : document->getSoapString());
  return Exit::Done;
}

Exit send(const std::string& file, const std::string& configurationUrl) {
  const Description description = describeForDelivery(file);
  const ZtString url =
      configurationUrl.empty() ? description.configurationUrl() : ZtString(configurationUrl);
  if (url.empty()) {
    throw Failure(Exit::WrongInput,
                  nameOf(file) + ": /configurationUrl: absent, and no --config-url is given");
  }

  const auto document = description.makeOnline(url);
  const std::string id(document->reportId().view());
  if (document->reportToServer()) {
    print("accepted: " + id + "\n");
    return Exit::Done;
  }
  const std::string reason = whyNotAccepted(*document);
  if (!isSaved(*document)) {
    throw Failure(Exit::MachineFailed, "not accepted (" + reason + "), and cannot be saved: " +
                                           path(document->reportFile()));
  }
  print("not accepted (" + reason + ")\nsaved: " + path(document->reportFile()) + "\n");
  return Exit::NotAccepted;
}

Exit save(const std::string& file) {
  const auto document = describeForDelivery(file).makeOffline();
  storeFolder();
  document->saveReport();
  if (!isSaved(*document)) {
    throw Failure(Exit::MachineFailed, path(document->reportFile()) + ": cannot be written");
  }
  print(path(document->reportFile()) + "\n");
  return Exit::Done;
}

Exit resend(const std::string& configurationUrl) {
  const std::string folder = storeFolder();
  const std::size_t before = savedReports(folder);
  if (before != 0) {
    ZtPortalData::initWithValues(configurationUrl, false, nullptr, nullptr, nullptr)
        ->sendSavedReports();
  }
  const std::size_t left = savedReports(folder);
  const std::size_t sent = before - std::min(before, left);
  print(std::to_string(sent) + " sent, " + std::to_string(left) + " left\n");
  return left == 0 ? Exit::Done : Exit::NotAccepted;
}

}  // namespace zt::tools
