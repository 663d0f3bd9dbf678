// SPDX-License-Identifier: Apache-2.0
#include "tests/support/Markdown.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace zt::test {

std::vector<MarkdownBlock> markdownBlocks(const std::string& file) {
  std::ifstream stream(file);
  if (!stream) throw std::runtime_error("cannot read " + file);
  std::vector<MarkdownBlock> blocks;
  std::string name;
  bool isInside = false;
  int number = 0;
  for (std::string line; std::getline(stream, line);) {
    ++number;
    if (line.starts_with("```")) {
      isInside = !isInside;
      if (!isInside) continue;
      MarkdownBlock block{"", name, "", number + 1};
      std::istringstream(line.substr(3)) >> block.language >> block.name;
      blocks.push_back(block);
      name.clear();
    } else if (isInside) {
      blocks.back().content += line + "\n";
    } else if (line.starts_with("`") && line.ends_with("`:")) {
      name = line.substr(1, line.size() - 3);
    } else if (!line.empty()) {
      name.clear();
    }
  }
  if (isInside) throw std::runtime_error("an open block in " + file);
  return blocks;
}

}  // namespace zt::test
