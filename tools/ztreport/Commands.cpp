#include "tools/ztreport/Commands.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>

#include "tools/ztreport/Description.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

namespace {

std::string nameOf(const std::string& file) { return file == "-" ? "standard input" : file; }

using OpenFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// The content of a file, or of standard input for "-". Nothing, with errno set, on failure.
std::optional<std::string> contentOf(const std::string& file) {
  const OpenFile opened(file == "-" ? nullptr : std::fopen(file.c_str(), "rbe"), &std::fclose);
  std::FILE* const stream = file == "-" ? stdin : opened.get();
  if (stream == nullptr) return std::nullopt;
  std::string content;
  std::array<char, std::size_t{16} * 1024> part;
  while (const std::size_t count = std::fread(part.data(), 1, part.size(), stream)) {
    content.append(part.data(), count);
  }
  if (std::ferror(stream) != 0) return std::nullopt;
  return content;
}

std::string readAll(const std::string& file) {
  if (auto content = contentOf(file)) return *content;
  throw Failure(Exit::MachineFailed, nameOf(file) + ": " + std::strerror(errno));
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

const std::string kNoFolder = "the store's folder cannot be created";

std::string storeFolder() {
  const ZtString folder = ZtPortalData::reportFolder();
  if (folder.isNull()) throw Failure(Exit::MachineFailed, kNoFolder);
  return path(folder);
}

/// The library saves in silence, so the file itself has to show that all of it is there.
bool isSaved(ZtPortalData& document) {
  const ZtString file = document.reportFile();
  return !file.isNull() && contentOf(path(file)) == document.getSoapString();
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

/// An answer that says no, one that says nothing and none at all look the same from here.
std::string whyNotAccepted(const ZtPortalData& document) {
  const std::string url(document.configurationUrl().view());
  if (!document.gotConfiguration()) return "no configuration at " + url;
  if (!document.online()) return "no answer from " + std::string(document.reportUrl().view());
  return "no confirmation from " + std::string(document.reportUrl().view());
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
    const ZtString saved = document->reportFile();
    throw Failure(Exit::MachineFailed,
                  "not accepted (" + reason + "), and not saved: " +
                      (saved.isNull() ? kNoFolder : path(saved) + ": cannot be written"));
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
  if (configurationUrl.empty()) throw Failure(Exit::WrongInput, "--config-url: empty");
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
