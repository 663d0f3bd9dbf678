// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "TestPaths.h"

// The links between the pages, and to files and headings.

namespace {

namespace fs = std::filesystem;

/// The lines of a Markdown file that are not in a fenced block.
std::vector<std::string> proseOf(const fs::path& page) {
  std::ifstream file(page);
  std::vector<std::string> lines;
  bool isCode = false;
  for (std::string line; std::getline(file, line);) {
    const bool isFence = line.starts_with("```");
    if (isFence) isCode = !isCode;
    if (!isCode && !isFence) lines.push_back(line);
  }
  return lines;
}

/// What a link to a heading ends with: lower case, hyphens for spaces, no other punctuation.
std::string anchorOf(const std::string& heading) {
  std::string anchor;
  for (const char c : heading.substr(heading.find(' ') + 1)) {
    if (c == ' ') anchor += '-';
    if (std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '_') {
      anchor += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
  }
  return anchor;
}

bool hasHeading(const fs::path& page, const std::string& anchor) {
  return std::ranges::any_of(proseOf(page), [&anchor](const std::string& line) {
    return line.starts_with('#') && anchorOf(line) == anchor;
  });
}

TEST(DocumentLinksTest, LeadToFilesAndHeadings) {
  const fs::path source = zt::test::paths::kSource;
  std::vector<fs::path> pages;
  for (const fs::path& folder : {source, source / "docs"}) {
    for (const auto& entry : fs::directory_iterator(folder)) {
      if (entry.path().extension() == ".md") pages.push_back(entry.path());
    }
  }
  ASSERT_GE(pages.size(), 25U);

  const std::regex link(R"(\]\(([^)#:]*)(#([^)]*))?\))");
  for (const fs::path& page : pages) {
    for (const std::string& line : proseOf(page)) {
      for (std::sregex_iterator found(line.begin(), line.end(), link), end; found != end; ++found) {
        const std::string name = found->str(1);
        const fs::path target = name.empty() ? page : page.parent_path() / name;
        EXPECT_TRUE(fs::exists(target)) << page << ": " << line;
        const std::string anchor = found->str(3);
        EXPECT_TRUE(anchor.empty() || hasHeading(target, anchor)) << page << ": " << line;
      }
    }
  }
}

}  // namespace
