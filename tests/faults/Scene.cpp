#include "tests/faults/Scene.h"

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <stdexcept>

#include "tests/faults/Failure.h"
#include "tests/faults/Host.h"
#include "tests/faults/Trial.h"

namespace zt::torture {

namespace {

constexpr std::size_t kSavedEarlier = 3;
constexpr std::chrono::seconds kPatience{60};
constexpr const char* kNoServer = "";
}  // namespace

// The bus would grumble about limits that it may not raise.
Scene::Scene()
    : _bus({"sh", "-c", "exec dbus-daemon --session --nofork --print-address 2>/dev/null"}) {
  becomeHost({_home, "", busAddress()});
  saveReports();
}

std::string Scene::busAddress() {
  const std::optional<std::string> address = _bus.readLine(kPatience);
  if (!address) throw std::runtime_error("the session bus does not start");
  return *address;
}

std::string Scene::store() const { return storeFolder(_home); }

void Scene::saveReports() {
  Trial trial([](const Teller&) {
    for (std::size_t number = 0; number < kSavedEarlier; ++number) {
      Random random(0, number);
      const auto document = makeDocument(kNoServer);
      fill(*document, random);
      document->saveReport();
    }
  });
  trial.wait(kPatience);
  for (const auto& [name, content] : stored()) _savedEarlier.emplace(name, content.value());
  if (_savedEarlier.size() != kSavedEarlier) throw Failure("reports cannot even be saved");
}

void Scene::clear() const {
  std::filesystem::remove_all(_home);
  std::filesystem::create_directory(_home);
}

/// With its version beside the program, or the library would look for it in all packages of the
/// machine, file by file.
void Scene::installBrowser() const {
  const std::string program = _folder.write("home/firefox/firefox", "#!/bin/sh\n");
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  _folder.write("home/firefox/application.ini", "[App]\nVersion=115.0\n");
  _folder.write("home/applications/firefox.desktop",
                "[Desktop Entry]\nType=Application\nName=Firefox\nExec=" + program + " %u\n");
}

void Scene::fillStore(std::size_t reports) const {
  clear();
  installBrowser();
  _folder.write("home/Kelvane/Torture/reports/notes.txt", "not a report");
  for (const auto& [name, text] : _savedEarlier) {
    if (reports == 0) break;
    _folder.write("home/Kelvane/Torture/reports/" + name, text);
    --reports;
  }
}

}  // namespace zt::torture
