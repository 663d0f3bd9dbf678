#include "tools/ztreport/commands/Delivery.h"

#include "tools/ztreport/commands/InputOutput.h"

namespace zt::tools {

namespace {

const std::string kNoFolder = "the store's folder cannot be created";

std::string path(const ZtString& text) { return std::string(text.view()); }

/// The library saves in silence, so the file itself has to show that all of it is there.
bool isSaved(ZtPortalData& document) {
  const ZtString file = document.reportFile();
  return !file.isNull() && contentOf(path(file)) == document.getSoapString();
}

std::string whyNotSaved(const ZtPortalData& document) {
  const ZtString file = document.reportFile();
  return file.isNull() ? kNoFolder : path(file) + ": cannot be written";
}

/// An answer that says no, one that says nothing and none at all look the same from here.
std::string whyNotAccepted(const ZtPortalData& document) {
  const std::string url(document.configurationUrl().view());
  if (!document.gotConfiguration()) return "no configuration at " + url;
  if (!document.online()) return "no answer from " + std::string(document.reportUrl().view());
  return "no confirmation from " + std::string(document.reportUrl().view());
}

}  // namespace

std::string storeFolder() {
  const ZtString folder = ZtPortalData::reportFolder();
  if (folder.isNull()) throw Failure(Exit::MachineFailed, kNoFolder);
  return path(folder);
}

Exit tellDelivery(ZtPortalData& document, bool accepted) {
  if (accepted) {
    print("accepted: " + path(document.reportId()) + "\n");
    return Exit::Done;
  }
  const std::string reason = whyNotAccepted(document);
  if (!isSaved(document)) {
    throw Failure(Exit::MachineFailed,
                  "not accepted (" + reason + "), and not saved: " + whyNotSaved(document));
  }
  print("not accepted (" + reason + ")\nsaved: " + path(document.reportFile()) + "\n");
  return Exit::NotAccepted;
}

Exit tellSaved(ZtPortalData& document) {
  if (!isSaved(document)) throw Failure(Exit::MachineFailed, whyNotSaved(document));
  print(path(document.reportFile()) + "\n");
  return Exit::Done;
}

}  // namespace zt::tools
