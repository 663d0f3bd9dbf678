#include <link.h>
#include <unistd.h>

#include <iostream>
#include <set>
#include <string_view>

#include "ztportal/ztportal.h"

// ModuleHost nothing|date|send|move CONFIGURATION-URL: a host that does no more with the library
// than start with it, write a date, send a report (or keep it), or go to another working directory
// and then send. Prints what came of it, and which foreign libraries its process has by then, one a
// line.

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

bool act(std::string_view deed, const char* configurationUrl) {
  if (deed == "nothing") return true;
  if (deed == "date") {
    std::cout << ZtPortalDef::stringFromDate(ZtDate::fromMilliseconds(0)).printed() << '\n';
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
