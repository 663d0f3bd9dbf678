// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <string_view>

#include "TestPaths.h"

// docs/c-functions.md: the table of functions is generated from the header.

namespace zt::test {
namespace {

const std::string kPage = paths::kSource + "/docs/c-functions.md";
constexpr std::string_view kGenerated = "<!-- The rest of this page is generated.";

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The text with each run of blanks, line ends and the stars of a comment as one blank.
std::string inOneLine(const std::string& text) {
  return std::regex_replace(std::regex_replace(text, std::regex("\n \\* "), " "),
                            std::regex("\\s+"), " ");
}

/// An example, which is a paragraph of its own, ends the sentence too.
std::string firstSentence(const std::string& comment) {
  std::smatch end;
  return std::regex_search(comment, end, std::regex("[.](?= |$)|:(?= [*])"))
             ? end.prefix().str() + "."
             : comment;
}

/// A table for each section of the header, with a row for each function.
std::string generatedPart() {
  const std::string header = contentOf(paths::kSource + "/ztportal/c/ztportal.h");
  // A heading, a comment, a function, or an empty line, at which a comment ends.
  const std::regex part(R"(/\* ---- (.*?) -+ \*/|/\* ([^*]*(?:\*[^/][^*]*)*) \*/|)"
                        R"(ZT_C_EXPORT (?:zt_status )?([^(;]*zt_\w+)\(([^;]*)\);|\n\n)");
  std::string text;
  std::string section;
  std::string comment;
  for (std::sregex_iterator found(header.begin(), header.end(), part), end; found != end; ++found) {
    const std::smatch& match = *found;
    if (match[1].matched) {
      section =
          "\n### " + match[1].str() + "\n\n| Function | Parameters | Effect |\n|---|---|---|\n";
    } else if (match[2].matched) {
      comment = firstSentence(inOneLine(match[2].str()));
    } else {
      if (match[3].matched) {
        text += section + "| `" + match[3].str() + "` | `" + inOneLine(match[4].str()) + "` | " +
                comment + " |\n";
        section.clear();
      }
      comment.clear();
    }
  }
  return text;
}

TEST(BindingsPageTest, HasTheFunctionsOfTheHeader) {
  const std::string page = contentOf(kPage);
  const std::size_t marker = page.find(kGenerated);
  ASSERT_NE(marker, std::string::npos);
  const std::string expected = page.substr(0, page.find("-->\n", marker) + 4) + generatedPart();
  if (std::getenv("ZT_UPDATE") != nullptr) {
    std::ofstream(kPage, std::ios::binary) << expected;
  } else {
    EXPECT_EQ(page, expected) << "ZT_UPDATE=1 updates the page";
  }
}

}  // namespace
}  // namespace zt::test
