#pragma once

#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace zt::test {

/// A fenced block of a Markdown file.
struct MarkdownBlock {
  std::string language;
  std::string file;  // of a block behind a line "`FILE`:", the name; otherwise empty
  std::string content;
};

inline std::vector<MarkdownBlock> markdownBlocks(const std::string& path) {
  constexpr std::string_view kFence = "```";
  std::ifstream stream(path);
  if (!stream) throw std::runtime_error("cannot read " + path);
  std::vector<MarkdownBlock> blocks;
  std::string announced;
  bool isInBlock = false;
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with(kFence)) {
      isInBlock = !isInBlock;
      if (isInBlock) blocks.push_back({line.substr(kFence.size()), announced, ""});
      announced.clear();
    } else if (isInBlock) {
      blocks.back().content += line + "\n";
    } else if (line.starts_with("`") && line.ends_with("`:")) {
      announced = line.substr(1, line.size() - 3);
    } else if (!line.empty()) {
      announced.clear();
    }
  }
  if (isInBlock) throw std::runtime_error("an open block in " + path);
  return blocks;
}

}  // namespace zt::test
