// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace zt::test {

/// A fenced block of a Markdown file. Its file name follows the language, or is in a line before
/// the block, as "`main.cpp`:".
///
///     ```json report.json
///     {"pools": []}
///     ```
struct MarkdownBlock {
  std::string language;  ///< "json"
  std::string name;      ///< "report.json", empty without one
  std::string content;   ///< whole lines
  int line = 0;          ///< line number in the file of the first line of content
};

/// Throws std::runtime_error if the file cannot be read or its last block has no end.
std::vector<MarkdownBlock> markdownBlocks(const std::string& file);

}  // namespace zt::test
