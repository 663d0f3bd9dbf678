#include <link.h>
#include <unistd.h>

#include <iostream>
#include <set>
#include <string_view>

#include "ztportal/ztportal.h"

// ModuleHost nothing|date|ask|send|move CONFIGURATION-URL: a host that does no more with the
// library than start with it, write a date, ask it this and that, send a report (or keep it), or go
// to another working directory and then send. Prints what came of it, and which foreign libraries
// its process has by then, one a line.

namespace {

/// Not libplist, which is needed as soon as any process on the machine runs from a bundle.
constexpr std::string_view kForeign[] = {"libcurl", "libicui18n", "libsystemd", "libxml2"};

int note(dl_phdr_info* loaded, std::size_t /*size*/, void* names) {
  const std::string_view path = loaded->dlpi_name;
  const std::string_view file = path.substr(path.rfind('/') + 1);
  for (const std::string_view library : kForeign) {
    if (file.starts_with(library)) static_cast<std::set<std::string_view>*>(names)->insert(library);
  }
  return 0;
}

void send(const char* configurationUrl) {
  const auto document = ZtPortalData::initWithValues(
      configurationUrl, false, "Kelvane", "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}", "2.1.77");
  document->addPool("CUSTOM", ZtDate::fromMilliseconds(0))->addString("RESULT", "good");
  const bool accepted = document->reportToServer();
  if (!accepted) document->saveReport();
  std::cout << (accepted ? "accepted" : "kept") << '\n';
}

/// A little of everything that the modules answer.
void ask() {
  ZtString language;
  ZtString country;
  ZtString countryName;
  ZtSystemInfos::getPreferredLanguage(&language, &country, &countryName);
  std::cout << "language: " << language.printed() << ", " << country.printed() << ", "
            << countryName.printed() << '\n';
  std::cout << "bundle: " << ZtHost::bundleInfo("CFBundleName").printed() << '\n';

  for (const char* bytes :
       {"<a Key='1'><B/></a>", "<?xml version='1.0' encoding='ISO-8859-1'?><\xFC/>"}) {
    ZtXMLError error;
    const auto document = ZtXMLDocument::parseFileContent(bytes, ZtXMLKeep::Content, &error);
    if (document == nullptr) {
      std::cout << "no document: " << error.reason.printed() << '\n';
      continue;
    }
    const ZtXMLNode root = *document->rootElement();
    std::cout << "document: " << document->xmlText() << " with " << root.attributes().size()
              << " attributes, b: " << ZtUtils::childNamedLike(root, "b").has_value() << '\n';
  }

  const auto inventory = ZtPortalPoolComputerSystem::initWithValues(ZtDate::now(), true);
  std::cout << "number of the user's language: " << inventory->userLanguage() << '\n';
}

bool act(std::string_view deed, const char* configurationUrl) {
  if (deed == "nothing") return true;
  if (deed == "date") {
    std::cout << ZtPortalDef::stringFromDate(ZtDate::fromMilliseconds(0)).printed() << '\n';
    return true;
  }
  if (deed == "ask") {
    ask();
    return true;
  }
  if (deed == "move" && ::chdir("/") != 0) return false;
  if (deed != "send" && deed != "move") return false;
  send(configurationUrl);
  return true;
}

}  // namespace

int main(int count, char** words) {
  if (count != 3 || !act(words[1], words[2])) return 2;
  std::set<std::string_view> libraries;
  ::dl_iterate_phdr(note, &libraries);
  for (const std::string_view library : libraries) std::cout << library << '\n';
  return 0;
}
