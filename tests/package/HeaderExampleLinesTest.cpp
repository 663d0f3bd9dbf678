#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "TestPaths.h"

// The examples in the comments of the public headers are those that the files beside this one run.

namespace {

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string content{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  if (content.empty()) throw std::runtime_error("cannot read " + path);
  return content;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/// `line` without a comment at its end; two slashes within a literal begin none.
std::string_view withoutComment(std::string_view line) {
  bool isInText = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '"' && (i == 0 || line[i - 1] != '\\')) isInText = !isInText;
    if (!isInText && line.substr(i).starts_with("//")) return line.substr(0, i);
  }
  return line;
}

/// How a line is broken and indented differs with the depth that it stands in.
std::string withoutBlanks(std::string_view text) {
  std::string dense;
  std::ranges::copy_if(text, std::back_inserter(dense),
                       [](unsigned char byte) { return std::isspace(byte) == 0; });
  return dense;
}

/// The code of the examples in `header`, line by line: what stands four blanks in.
std::vector<std::string> exampleLines(const std::string& header) {
  constexpr std::string_view kExample = "///     ";
  std::vector<std::string> lines;
  for (const std::string& line : linesOf(contentOf(header))) {
    const std::size_t begin = line.find_first_not_of(' ');
    if (begin == line.npos || line.compare(begin, kExample.size(), kExample) != 0) continue;
    std::string code =
        withoutBlanks(withoutComment(std::string_view(line).substr(begin + kExample.size())));
    if (!code.empty()) lines.push_back(code);
  }
  return lines;
}

std::vector<std::string> publicHeaders() {
  std::vector<std::string> headers;
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(zt::test::paths::kPublicHeaders)) {
    if (entry.is_regular_file()) headers.push_back(entry.path().string());
  }
  return headers;
}

std::string codeThatRuns() {
  std::string code;
  for (const char* name : {"/HeaderExamplesTest.cpp", "/PoolHeaderExamplesTest.cpp"}) {
    for (const std::string& line :
         linesOf(contentOf(zt::test::paths::kSource + "/tests/package/examples" + name))) {
      code += withoutBlanks(withoutComment(line));
    }
  }
  return code;
}

TEST(HeaderExampleLinesTest, EachLineOfTheHeadersExamplesIsRun) {
  const std::string code = codeThatRuns();
  std::size_t count = 0;
  for (const std::string& header : publicHeaders()) {
    for (const std::string& line : exampleLines(header)) {
      EXPECT_NE(code.find(line), code.npos) << header << ": " << line;
      ++count;
    }
  }
  EXPECT_GT(count, 40U) << "the examples are not found";
}

}  // namespace
