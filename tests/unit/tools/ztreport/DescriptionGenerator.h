#pragma once

#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <string_view>

#include "tools/common/Rfc3339.h"
#include "ztportal/base/ZtDate.h"

namespace zt::test {

/// Makes up report descriptions: every kind of pool and field, values at the ends of their ranges,
/// names and values full of markup. The same seed gives the same descriptions.
class DescriptionGenerator {
 public:
  explicit DescriptionGenerator(std::uint32_t seed) : _random(seed) {}

  nlohmann::json report() {
    nlohmann::json report{{"pools", nlohmann::json::array()}};
    for (const char* key : {"customerId", "applicationId", "applicationVersion"}) {
      maybe(report, key, [&] { return text(); });
    }
    const int count = below(4) + 1;
    for (int i = 0; i < count; ++i) report["pools"].push_back(pool());
    return report;
  }

  nlohmann::json date() {
    const std::int64_t milliseconds = moment();
    const std::chrono::minutes offset(oneIn(3) ? below(2 * 1439 + 1) - 1439 : 0);
    return formatRfc3339(std::chrono::milliseconds(milliseconds), offset);
  }

  /// Any moment that a description can have, most of them near to us or to a change of clocks.
  std::int64_t moment() {
    // Changes of Berlin, St John's, and all of Kolkata's history; the Gregorian reform.
    constexpr std::array<std::int64_t, 8> kChanges{1774746000000,   1792890000000, 1772947800000,
                                                   1793507400000,   -872058600000, -3645237208000,
                                                   -12219292800000, -2422054408000};
    constexpr std::int64_t kFirst = -62167219200000;  // 0000-01-01
    constexpr std::int64_t kLast = 253402300799999;   // 9999-12-31
    switch (below(4)) {
      case 0:
        return kChanges[static_cast<std::size_t>(below(kChanges.size()))] +
               between(-7200000, 7200000);
      case 1:
        return between(kFirst, kLast);
      case 2:
        return oneIn(2) ? kFirst + between(0, 100000000) : kLast - between(0, 100000000);
      default:
        return between(0, 2000000000000);
    }
  }

  std::string string() {
    static const std::array<std::string_view, 40> kPieces{{"a",
                                                           "Home",
                                                           "ä",
                                                           "€",
                                                           "😀",
                                                           " ",
                                                           "  ",
                                                           "\t",
                                                           "\"",
                                                           "'",
                                                           "&",
                                                           "&amp;",
                                                           "<",
                                                           ">",
                                                           "/",
                                                           "\\",
                                                           "<Field>",
                                                           "</Field>",
                                                           "<Fields/>",
                                                           "</Fields>",
                                                           "<Name>",
                                                           "</Name>",
                                                           "<Value>",
                                                           "</Value>",
                                                           "</Date>",
                                                           "</Data>",
                                                           "<Data Pool=\"X\">",
                                                           "</Datas>",
                                                           "</reportData>",
                                                           "\">",
                                                           "(null)",
                                                           "(null",
                                                           "TRUE",
                                                           "0",
                                                           "\x1b[2J",
                                                           "\x7f",
                                                           "\n",
                                                           "\r",
                                                           "]]>",
                                                           std::string_view("\0", 1)}};
    std::string text;
    for (int i = below(6); i > 0; --i) {
      text += kPieces[static_cast<std::size_t>(below(kPieces.size()))];
    }
    // "\r" and "\n" side by side are a line end, which not every value can have.
    for (std::size_t at = text.find("\r\n"); at != text.npos; at = text.find("\r\n")) {
      text.erase(at, 1);
    }
    if (oneIn(20)) return "one\r\ntwo & <three>\r\n";
    return text;
  }

 private:
  using Json = nlohmann::json;

  std::int64_t between(std::int64_t first, std::int64_t last) {
    return std::uniform_int_distribution<std::int64_t>(first, last)(_random);
  }
  int below(std::size_t count) {
    return static_cast<int>(between(0, static_cast<std::int64_t>(count) - 1));
  }
  bool oneIn(int count) { return below(static_cast<std::size_t>(count)) == 0; }

  template <class Make>
  void maybe(Json& object, const char* key, Make make) {
    if (!oneIn(4)) object[key] = make();
  }

  Json text() { return oneIn(8) ? Json(nullptr) : Json(string()); }
  Json dateOrNull() { return oneIn(8) ? Json(nullptr) : date(); }
  Json integer() {
    using Limits = std::numeric_limits<std::int32_t>;
    if (oneIn(4)) return oneIn(2) ? Limits::min() : Limits::max();
    return oneIn(2) ? between(-99, 99) : between(Limits::min(), Limits::max());
  }
  Json real() {
    if (oneIn(4)) return static_cast<double>(between(-100000, 100000)) / 1000;
    if (oneIn(8)) return oneIn(2) ? -0.0 : 1e-50;
    if (oneIn(8)) return static_cast<double>(std::numeric_limits<float>::max());
    for (;;) {
      const auto bits = static_cast<std::uint32_t>(between(0, 0xFFFFFFFF));
      float number = 0;
      std::memcpy(&number, &bits, sizeof number);
      if (std::isfinite(number)) return static_cast<double>(number);
    }
  }
  Json boolean() { return oneIn(3) ? Json(between(-128, 255)) : Json(oneIn(2)); }
  Json enumerator(std::initializer_list<const char*> names) {
    if (oneIn(3)) return std::uint64_t(between(0, 60));
    if (oneIn(8)) return std::numeric_limits<std::uint64_t>::max();
    return *(names.begin() + below(names.size()));
  }

  Json fields(int depth) {
    Json list = Json::array();
    for (int i = below(5); i > 0; --i) list.push_back(field(depth));
    return list;
  }

  Json field(int depth) {
    constexpr std::array<const char*, 6> kTypes{
        {"string", "integer", "float", "boolean", "none", "array"}};
    const std::string type = kTypes[static_cast<std::size_t>(below(kTypes.size()))];
    Json field{{"type", type}};
    maybe(field, "name", [&] { return oneIn(4) ? Json(fieldOfAPool()) : text(); });
    if (type == "array") {
      if (depth < 8) maybe(field, "fields", [&] { return fields(depth + 1); });
    } else if (type != "none") {
      maybe(field, "value", [&] {
        if (type == "integer") return integer();
        if (type == "float") return real();
        return type == "boolean" ? boolean() : text();
      });
    }
    return field;
  }

  std::string fieldOfAPool() {
    constexpr std::array<const char*, 6> kNames{{"INSTALLATION_TYPE", "START_TIME",
                                                 "INSTALLATIONSTEPS", "DIAGNOSESTEPS", "BROWSERS",
                                                 "WINDOWS_FIREWALL_ENABLED"}};
    return kNames[static_cast<std::size_t>(below(kNames.size()))];
  }

  Json pool() {
    constexpr std::array<const char*, 7> kKinds{{"generic", "execution", "deinstallation",
                                                 "initialization", "diagnose", "connectionManager",
                                                 "computerSystem"}};
    const std::string kind = kKinds[static_cast<std::size_t>(below(kKinds.size()))];
    Json pool{{"kind", kind}};
    maybe(pool, "timeStamp", [&] { return dateOrNull(); });
    maybe(pool, "fields", [&] { return fields(0); });
    if (kind == "generic") addGeneric(pool);
    if (kind == "execution") addExecution(pool);
    if (kind == "deinstallation" || kind == "initialization") addRun(pool);
    if (kind == "diagnose") addDiagnose(pool);
    if (kind == "connectionManager") addManager(pool);
    if (kind == "computerSystem") addComputer(pool);
    return pool;
  }

  void addGeneric(Json& pool) {
    constexpr std::array<const char*, 6> kTypes{{"EXECUTION", "DEINSTALLATION", "INITIALIZATION",
                                                 "DIAGNOSE", "CONNECTIONMANAGER",
                                                 "COMPUTER_SYSTEM"}};
    maybe(pool, "poolType", [&] {
      return oneIn(2) ? Json(kTypes[static_cast<std::size_t>(below(kTypes.size()))]) : text();
    });
  }

  void addRun(Json& pool) {
    for (const char* key :
         {"endResultString", "endResultCode", "endErrorMessageString", "endErrorMessageCode"}) {
      maybe(pool, key, [&] { return text(); });
    }
    maybe(pool, "startTime", [&] { return dateOrNull(); });
    maybe(pool, "endTime", [&] { return dateOrNull(); });
    maybe(pool, "successfull", [&] { return boolean(); });
  }

  void addExecution(Json& pool) {
    addRun(pool);
    for (const char* key : {"startPoint", "endPoint", "executionType"}) {
      maybe(pool, key, [&] { return text(); });
    }
    maybe(pool, "cancelled", [&] { return boolean(); });
    maybe(pool, "steps", [&] {
      return records([&](Json& step) {
        maybe(step, "timeStamp", [&] { return dateOrNull(); });
        maybe(step, "stepType", [&] {
          return enumerator({"ENTER", "LEAVE", "EXIT", "INFO", "ERROR"});
        });
        for (const char* key : {"stepName", "stepMessageString", "stepMessageCode"}) {
          maybe(step, key, [&] { return text(); });
        }
      });
    });
  }

  void addDiagnose(Json& pool) {
    maybe(pool, "steps", [&] {
      return records([&](Json& step) {
        maybe(step, "timeStamp", [&] { return dateOrNull(); });
        maybe(step, "diagnoseType", [&] { return enumerator({"MANUAL", "AUTOMATIC", "RIS"}); });
        for (const char* key :
             {"stepName", "stepMessageString", "stepMessageCode", "optionalString"}) {
          maybe(step, key, [&] { return text(); });
        }
        for (const char* key : {"successfullRepair", "cancelledRepair", "optionalBoolean"}) {
          maybe(step, key, [&] { return boolean(); });
        }
      });
    });
  }

  void addManager(Json& pool) {
    for (const char* key : {"deviceModel", "deviceManufacturer", "deviceIMEI", "simOperator",
                            "simIMSI", "interfaceType"}) {
      maybe(pool, key, [&] { return text(); });
    }
    for (const char* key : {"sentSMS",
                            "sentSMSWithReport",
                            "sentSMSFlash",
                            "smsSendErrorCount",
                            "receivedSMS",
                            "receivedSMSReports",
                            "manualRegistrationsFailed",
                            "wifiConnectionsEstablished",
                            "profileEdits",
                            "profileCreations",
                            "profileDeletions",
                            "mobileConnections",
                            "mobileConnectionsFailed",
                            "mobileRoamingConnections",
                            "mobileRoamingConnectionsFailed",
                            "mobileVolumeHome",
                            "mobileVolumeRoaming",
                            "recognizedAltConnections",
                            "autoSwitchesToAltConnection",
                            "manualSwitchesToAltConnection"}) {
      maybe(pool, key, [&] { return integer(); });
    }
    maybe(pool, "registeredRoamNetworks", [&] { return Json::array({string()}); });
  }

  void addComputer(Json& pool) {
    for (const char* key : {"osName", "osVersion", "osBuildString"}) {
      maybe(pool, key, [&] { return text(); });
    }
    for (const char* key : {"osLanguage", "userLanguage"}) {
      maybe(pool, key, [&] { return enumerator({"GERMAN", "NEUTRAL", "VIETNAMESE", "ENGLISH"}); });
    }
    for (const char* key : {"isAdmin", "firewallEnabled"}) {
      maybe(pool, key, [&] { return boolean(); });
    }
    maybe(pool, "servicePack", [&] { return integer(); });
    const auto programs = [&](std::initializer_list<const char*> flags, bool hasCompany) {
      return records([&](Json& program) {
        maybe(program, "appName", [&] { return text(); });
        maybe(program, "appVersion", [&] { return text(); });
        if (hasCompany) maybe(program, "appCompany", [&] { return text(); });
        for (const char* flag : flags) maybe(program, flag, [&] { return boolean(); });
      });
    };
    maybe(pool, "browsers", [&] { return programs({"isStandard"}, false); });
    maybe(pool, "emailClients", [&] { return programs({"isStandard"}, false); });
    maybe(pool, "firewallApps", [&] { return programs({"isEnabled"}, true); });
    maybe(pool, "antivirusApps", [&] { return programs({"isEnabled", "isUpToDate"}, true); });
  }

  template <class Fill>
  Json records(Fill fill) {
    Json list = Json::array();
    for (int i = below(4); i > 0; --i) {
      Json record = Json::object();
      fill(record);
      list.push_back(record);
    }
    return list;
  }

  std::mt19937 _random;
};

}  // namespace zt::test
