// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <chrono>
#include <cmath>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "ztportal/base/ZtDate.h"
#include "ztportal/platform/time/Rfc3339.h"
#include "ztportal/pools/FieldTable.h"

namespace zt::test {

/// Generates random report descriptions: every kind of pool and field, values at the limits of
/// their ranges, names and values full of markup. The same seed generates the same descriptions.
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

  /// Any timestamp that a description can have, most of them recent or close to a clock change.
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
    static const std::vector<std::string> kPieces = [] {
      std::vector<std::string> pieces{" ", "  ", "\t", "\x1b[2J", "\x7f", "\n", "\r"};
      pieces.emplace_back("<Data Pool=\"X\">");
      pieces.emplace_back(1, '\0');
      std::istringstream words(
          "a Home ä € 😀 \" ' & &amp; < > / \\ <Field> </Field> <Fields/> </Fields> <Name> </Name> "
          "<Value> </Value> </Date> </Data> </Datas> </reportData> \"> (null) (null TRUE 0 ]]>");
      for (std::string word; words >> word;) pieces.push_back(word);
      return pieces;
    }();
    std::string text;
    for (int i = below(6); i > 0; --i) {
      text += kPieces[static_cast<std::size_t>(below(kPieces.size()))];
    }
    // "\r" and "\n" side by side are a line end, which not every value can have.
    for (std::size_t at = text.find("\r\n"); at != std::string::npos; at = text.find("\r\n")) {
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
  Json enumerator(const Enumeration& enumeration) {
    if (oneIn(8)) return std::numeric_limits<std::uint64_t>::max();
    const auto number = static_cast<std::uint64_t>(below(enumeration.count + 20));
    const ZtString name = enumeration.nameOf(number);
    if (name.empty() || oneIn(3)) return number;
    return std::string(name.view());
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

  /// The name of a field or the type of a pool that a generic one has no reason to have.
  std::string fieldOfAPool() {
    constexpr std::array<const char*, 6> kNames{{"INSTALLATION_TYPE", "START_TIME",
                                                 "INSTALLATIONSTEPS", "DIAGNOSESTEPS", "BROWSERS",
                                                 "WINDOWS_FIREWALL_ENABLED"}};
    return kNames[static_cast<std::size_t>(below(kNames.size()))];
  }
  std::string typeOfAPool() {
    std::vector<std::string> types;
    eachPoolClass([&types]<class Pool> {
      if constexpr (!std::same_as<Pool, ZtPortalPool>) types.emplace_back(Fields<Pool>::kType);
    });
    return types[static_cast<std::size_t>(below(types.size()))];
  }

  Json pool() {
    std::vector<Json (DescriptionGenerator::*)()> makers;
    eachPoolClass([&makers]<class Pool> { makers.push_back(&DescriptionGenerator::poolOf<Pool>); });
    return (this->*makers[static_cast<std::size_t>(below(makers.size()))])();
  }

  template <class Pool>
  Json poolOf() {
    Json pool = members<Pool>();
    pool["kind"] = Fields<Pool>::kKind;
    maybe(pool, "timeStamp", [&] { return dateOrNull(); });
    maybe(pool, "fields", [&] { return fields(0); });
    if (std::same_as<Pool, ZtPortalPool> && oneIn(2)) pool["poolType"] = typeOfAPool();
    return pool;
  }

  template <class Object>
  Json members() {
    Json object = Json::object();
    eachField<Object>([&](const auto& row) {
      using Row = std::remove_cvref_t<decltype(row)>;
      if constexpr (!std::same_as<Row, FalseField>) {
        maybe(object, std::string(row.key).c_str(),
              [&] { return member<typename Row::Member>(row.enumeration); });
      }
    });
    return object;
  }

  template <class Member>
  Json member(const Enumeration* enumeration) {
    if constexpr (std::same_as<Member, ZtAtomic<ZtString>>) {
      return text();
    } else if constexpr (std::same_as<Member, ZtAtomic<ZtDate>>) {
      return dateOrNull();
    } else if constexpr (std::same_as<Member, ZtBOOL>) {
      return boolean();
    } else if constexpr (std::same_as<Member, std::uint64_t>) {
      return enumerator(*enumeration);
    } else if constexpr (std::integral<Member>) {
      return integer();
    } else if constexpr (requires { typename RecordOf<Member>::Type; }) {
      Json list = Json::array();
      for (int i = below(4); i > 0; --i) list.push_back(members<typename RecordOf<Member>::Type>());
      return list;
    } else {
      return Json::array({string()});
    }
  }

  std::mt19937 _random;
};

}  // namespace zt::test
