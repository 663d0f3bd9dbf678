#include "tools/ztreport/commands/Columns.h"

#include <algorithm>
#include <utility>

namespace zt::tools {

namespace {

std::size_t widthOf(const std::string& text) {
  return static_cast<std::size_t>(std::ranges::count_if(
      text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

}  // namespace

Columns::Columns(std::vector<Align> alignments)
    : _alignments(std::move(alignments)), _widths(_alignments.size()) {}

void Columns::add(std::vector<std::string> texts) {
  for (std::size_t i = 0; i < texts.size(); ++i) {
    _widths[i] = std::max(_widths[i], widthOf(texts[i]));
  }
  _lines.push_back(std::move(texts));
}

std::string Columns::text() const {
  std::string all;
  for (const auto& line : _lines) {
    std::string row;
    for (std::size_t i = 0; i < line.size(); ++i) {
      const std::string blanks(_widths[i] - widthOf(line[i]), ' ');
      if (i != 0) row += "  ";
      row += _alignments[i] == Align::Right ? blanks + line[i] : line[i] + blanks;
    }
    row.resize(row.find_last_not_of(' ') + 1);
    all += row + "\n";
  }
  return all;
}

}  // namespace zt::tools
