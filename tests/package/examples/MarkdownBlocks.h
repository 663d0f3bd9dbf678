#pragma once

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace zt::test {

/// A fenced block of a Markdown text.
///
///     ```json report.json
///     {"pools": []}
///     ```
struct MarkdownBlock {
  std::string language;  ///< "json"
  std::string name;      ///< "report.json", empty without one
  std::string content;   ///< whole lines
  int line = 0;          ///< of the first of them in the file
};

inline std::vector<MarkdownBlock> blocksOf(const std::string& file) {
  std::ifstream stream(file);
  if (!stream) throw std::runtime_error("cannot read " + file);
  std::vector<MarkdownBlock> blocks;
  bool isInside = false;
  int number = 0;
  for (std::string line; std::getline(stream, line);) {
    ++number;
    const bool isFence = line.starts_with("```");
    if (isFence && !isInside) {
      MarkdownBlock block;
      std::istringstream(line.substr(3)) >> block.language >> block.name;
      block.line = number + 1;
      blocks.push_back(block);
    } else if (!isFence && isInside) {
      blocks.back().content += line + "\n";
    }
    if (isFence) isInside = !isInside;
  }
  return blocks;
}

}  // namespace zt::test
