#include "tests/faults/Host.h"

#include <stdlib.h>

#include <array>
#include <cstddef>

#include "ztportal/system/ZtHost.h"

namespace zt::torture {

namespace {

constexpr const char* kApplicationId = "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}";
constexpr const char* kNoBus = "unix:path=/nonexistent/bus";

constexpr std::array<const char*, 8> kTexts{"",
                                            "x",
                                            "gr\xc3\xbc\xc3\x9f",
                                            "\xf0\x9f\x9a\x80 up",
                                            "two  blanks",
                                            "\"quoted\" 'twice'",
                                            "\ttab",
                                            "line\nbreak"};

void setOrUnset(const char* name, const std::string& value) {
  if (value.empty()) {
    ::unsetenv(name);
  } else {
    ::setenv(name, value.c_str(), 1);
  }
}

/// Most are short; some do not fit into one segment, a few not into the sockets' buffers.
std::string anyText(Random& random) {
  const std::uint64_t kind = random.below(400);
  std::string text = kTexts[random.below(kTexts.size())];
  if (kind == 0) text.append(random.below(1'000'000), 'h');
  if (kind < 20) text.append(random.below(20'000), 'l');
  return text;
}

void addCustom(ZtPortalData& document, Random& random) {
  const auto pool = document.addPool("CUSTOM", ZtDate::now());
  for (std::uint64_t field = random.below(6); field > 0; --field) {
    pool->addString("VALUE" + std::to_string(field), anyText(random));
    pool->addInteger("NUMBER", static_cast<std::int32_t>(random.below(1'000'000)));
  }
}

void addExecution(ZtPortalData& document, Random& random) {
  const auto pool = document.addPoolExecution(ZtDate::now());
  pool->setStartPoint("setup");
  pool->setEndResultString(anyText(random));
  for (std::uint64_t step = random.below(30); step > 0; --step) {
    pool->addStep(ZtDate::now(), "Copy", ZtPortalStepEnter)->setStepMessageString(anyText(random));
  }
}

void addDiagnose(ZtPortalData& document, Random& random) {
  document.addPoolDiagnose(ZtDate::now())->addString("FOUND", anyText(random));
}

void addConnectionManager(ZtPortalData& document, Random& random) {
  document.addPoolConnectionManager(ZtDate::now())->addBOOL("ROAMS", ZtBOOL(random.below(2)));
}

using AddPool = void (*)(ZtPortalData&, Random&);
constexpr std::array<AddPool, 4> kPools{addCustom, addExecution, addDiagnose, addConnectionManager};

}  // namespace

void becomeHost(const HostSettings& settings) {
  ZtHost::setBundleInfo({{"CFBundleName", "Torture"}, {"CFBundleShortVersionString", "1.0"}});
  for (const char* name : {"https_proxy", "all_proxy", "no_proxy", "HTTPS_PROXY", "ALL_PROXY",
                           "NO_PROXY", "XDG_RUNTIME_DIR"}) {
    ::unsetenv(name);
  }
  ::setenv("LANG", "de_DE.UTF-8", 1);  // without a language a probe ends early
  setOrUnset("XDG_DATA_HOME", settings.dataFolder);
  setOrUnset("http_proxy", settings.proxy);
  setOrUnset("DBUS_SESSION_BUS_ADDRESS",
             settings.sessionBus.empty() ? kNoBus : settings.sessionBus);
}

std::string storeFolder(const std::string& dataFolder) {
  return dataFolder + "/Kelvane/Torture/reports";
}

std::string textOf(const ZtString& text) { return std::string(text.view()); }

std::string fileNameOf(const ZtPortalData& document) {
  return textOf(document.reportId()) + ".ztr";
}

std::shared_ptr<ZtPortalData> makeDocument(const std::string& url) {
  return ZtPortalData::initWithValues(url, false, "Kelvane", kApplicationId, "2.1.77");
}

void fill(ZtPortalData& document, Random& random) {
  for (std::uint64_t pool = random.below(4) + 1; pool > 0; --pool) {
    kPools[random.below(kPools.size())](document, random);
  }
}

std::string resentText(std::string written) {
  std::erase(written, '\r');
  return written;
}

}  // namespace zt::torture
