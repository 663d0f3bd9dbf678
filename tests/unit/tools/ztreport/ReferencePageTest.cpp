// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <concepts>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "TestPaths.h"
#include "tests/support/JsonFault.h"
#include "ztportal/pools/FieldTable.h"
#include "ztportal/portal/ZtReportDescription.h"

// docs/report-pools.md is generated from the field tables. The tables of docs/report-description.md
// are compared with the keys that a description accepts.

namespace {

using zt::eachField;
using zt::Fields;
using Description = ZtReportDescription;

const std::string kPage = zt::test::paths::kSource + "/docs/report-description.md";
const std::string kPoolsPage = zt::test::paths::kSource + "/docs/report-pools.md";
constexpr std::string_view kGenerated = "<!-- The rest of this page is generated.";

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string code(std::string_view text) { return "`" + std::string(text) + "`"; }

std::string typeName(const zt::Enumeration& enumeration) {
  if (&enumeration == &zt::kStepTypes) return "step type";
  return &enumeration == &zt::kDiagnoseTypes ? "diagnose type" : "language";
}

template <class Member>
std::string typeName(const zt::Enumeration* enumeration) {
  if constexpr (std::same_as<Member, ZtAtomic<ZtString>>) {
    return "string";
  } else if constexpr (std::same_as<Member, ZtAtomic<ZtDate>>) {
    return "date";
  } else if constexpr (std::same_as<Member, std::int32_t>) {
    return "integer";
  } else if constexpr (std::same_as<Member, std::int64_t>) {
    return "64-bit integer";
  } else if constexpr (std::same_as<Member, ZtBOOL>) {
    return "boolean";
  } else if constexpr (std::same_as<Member, std::uint64_t>) {
    return typeName(*enumeration);
  } else if constexpr (requires { typename zt::RecordOf<Member>::Type; }) {
    return "list";
  } else {
    return "list of texts";
  }
}

/// The default of a value, read from an object whose description says nothing about it.
class Defaults {
 public:
  explicit Defaults(ZtDate poolTime) : _poolTime(poolTime) {}

  std::string of(const ZtAtomic<ZtString>& value) const {
    const ZtString string = value.load();
    return string.isNull() ? "null" : code("\"" + std::string(string.view()) + "\"");
  }
  std::string of(const ZtAtomic<ZtDate>& value) const {
    const ZtDate date = value.load();
    if (date.isNull()) return "null";
    return date == _poolTime ? "the pool's `timeStamp`" : "now";
  }
  std::string of(std::int32_t value) const { return std::to_string(value); }
  std::string of(std::int64_t value) const { return std::to_string(value); }
  std::string of(ZtBOOL value) const { return code(value == 1 ? "true" : "false"); }
  template <class List>
  std::string of(const List& /*list*/) const {
    return "empty";
  }

 private:
  ZtDate _poolTime;
};

template <class Record>
const Record& firstOf(const std::vector<std::shared_ptr<Record>>& list) {
  return *list.at(0);
}
template <class List>
const auto& firstOf(const std::shared_ptr<List>& list) {
  return firstOf(*list);
}
template <class List>
const auto& firstOf(const ZtAtomic<std::shared_ptr<List>>& list) {
  return firstOf(*list.load());
}

std::string line(const std::string& key, const std::string& type, const std::string& byDefault,
                 std::string_view wireName) {
  return "| " + key + " | " + type + " | " + byDefault + " | " +
         (wireName.empty() ? "–" : code(wireName)) + " |\n";
}

template <class Object>
std::string rowsOf(const Object& object, const Defaults& defaults, const std::string& mark) {
  std::string rows;
  eachField<Object>([&](const auto& row) {
    using Row = std::remove_cvref_t<decltype(row)>;
    if constexpr (std::same_as<Row, zt::FalseField>) {
      rows += line("none", "boolean", "always `FALSE`", row.wireName);
    } else {
      using Member = typename Row::Member;
      const Member& value = object.*row.member;
      std::string byDefault;
      if constexpr (std::same_as<Member, std::uint64_t>) {
        byDefault = code("\"" + std::string(row.enumeration->nameOf(value).view()) + "\"");
      } else {
        byDefault = defaults.of(value);
      }
      rows +=
          line(mark + code(row.key), typeName<Member>(row.enumeration), byDefault, row.wireName);
      if constexpr (requires { typename zt::RecordOf<Member>::Type; }) {
        rows += rowsOf(firstOf(value), defaults, "… ");
      }
    }
  });
  return rows;
}

/// A pool whose description has only a timestamp and one empty entry in each list.
template <class Pool>
std::shared_ptr<Pool> plainPool() {
  std::string lists;
  eachField<Pool>([&lists](const auto& row) {
    using Row = std::remove_cvref_t<decltype(row)>;
    if constexpr (!std::same_as<Row, zt::FalseField>) {
      if constexpr (requires { typename zt::RecordOf<typename Row::Member>::Type; }) {
        lists += ", \"" + std::string(row.key) + "\": [{}]";
      }
    }
  });
  const Description description(R"({"pools": [{"timeStamp": "2000-01-01T00:00:00Z", "kind": ")" +
                                std::string(Fields<Pool>::kKind) + '"' + lists + "}]}");
  return std::dynamic_pointer_cast<Pool>(description.makeOffline()->pools().at(0));
}

/// The tables of all kinds; kinds with the same keys share one.
std::string generatedPart() {
  struct Section {
    std::string title;
    std::string note;
    std::string rows;
  };
  std::vector<Section> sections;
  zt::eachPoolClass([&sections]<class Pool> {
    const auto pool = plainPool<Pool>();
    Section section{code(Fields<Pool>::kKind), "", rowsOf(*pool, Defaults(pool->timeStamp()), "")};
    if constexpr (std::same_as<Pool, ZtPortalPool>) {
      section.note = "A pool with only generic fields.";
      section.rows.replace(section.rows.find("–"), std::string_view("–").size(), "the pool's type");
    } else {
      section.note = "Pool type " + code(Fields<Pool>::kType) + ".";
    }
    if constexpr (std::same_as<Pool, ZtPortalPoolComputerSystem>) {
      section.note +=
          " It also has the key `autoCheck` (`true` or `false`, default `false`): whether\nthe pool"
          " is filled from this machine first; the other keys then override what was found.";
    }
    if (!sections.empty() && sections.back().rows == section.rows) {
      sections.back().title += ", " + section.title;
      sections.back().note += " " + section.note;
    } else {
      sections.push_back(std::move(section));
    }
  });
  std::string text;
  for (const Section& section : sections) {
    text += "\n## " + section.title + "\n\n" + section.note +
            "\n\n| Key | Type | Default | In reports |\n|---|---|---|---|\n" + section.rows;
  }
  return text;
}

TEST(ReferencePageTest, HasTheTablesOfTheKindsAsTheyAre) {
  const std::string page = contentOf(kPoolsPage);
  const std::size_t marker = page.find(kGenerated);
  ASSERT_NE(marker, std::string::npos);
  const std::string expected = page.substr(0, page.find('\n', marker) + 1) + generatedPart();
  if (std::getenv("ZT_UPDATE") != nullptr) {
    std::ofstream(kPoolsPage, std::ios::binary) << expected;
  } else {
    EXPECT_EQ(page, expected) << "ZT_UPDATE=1 updates the page";
  }
}

TEST(ReferencePageTest, ItsExampleIsADescription) {
  const std::string page = contentOf(kPage);
  const std::string start = "```json\n";
  const std::size_t begin = page.find(start) + start.size();
  const Description description(page.substr(begin, page.find("```", begin) - begin));
  EXPECT_EQ(description.makeOffline()->pools().size(), 2U);
}

/// The keys in the first column of the table under a heading of the page.
std::vector<std::string> keysUnder(const std::string& heading) {
  const std::string page = contentOf(kPage);
  std::vector<std::string> keys;
  const std::size_t end = page.find("\n#", page.find("\n## " + heading + "\n") + 2);
  std::size_t at = page.find("\n## " + heading + "\n");
  while ((at = page.find("\n| `", at)) < end) {
    at += std::string_view("\n| `").size();
    keys.push_back(page.substr(at, page.find('`', at) - at));
  }
  return keys;
}

/// The error message for a key with a value that no key accepts.
std::string faultOf(const std::string& before, const std::string& key, const std::string& after) {
  return zt::test::faultOf(
      [&] { const Description description(before + '"' + key + R"(": {"x": 0})" + after); });
}

TEST(ReferencePageTest, ItsOtherTablesHaveKeysThatDescriptionsHave) {
  const std::vector<std::string> ofReports = keysUnder("The report");
  EXPECT_EQ(ofReports.size(), 6U);
  for (const std::string& key : ofReports) {
    EXPECT_TRUE(faultOf("{", key, "}").starts_with("/" + key + ": expected ")) << key;
  }
  const std::vector<std::string> ofPools = keysUnder("Pools");
  EXPECT_EQ(ofPools.size(), 3U);
  for (const std::string& key : ofPools) {
    const std::string kind = key == "kind" ? "" : R"("kind": "generic", )";
    EXPECT_TRUE(faultOf(R"({"pools": [{)" + kind, key, "}]}")
                    .starts_with("/pools/0/" + key + ": expected "))
        << key;
  }
  std::string types;
  for (const std::string& type : keysUnder("Fields")) {
    if (type != "type") types += (types.empty() ? "" : ", ") + type.substr(1, type.size() - 2);
  }
  EXPECT_EQ(faultOf(R"({"pools": [{"kind": "generic", "fields": [{)", "name", "}]}]}"),
            "/pools/0/fields/0: \"type\" is absent; it is one of " + types);
}

}  // namespace
