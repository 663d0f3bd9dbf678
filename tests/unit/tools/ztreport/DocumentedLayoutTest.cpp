#include <gtest/gtest.h>

#include <span>
#include <string>
#include <string_view>

#include "TestPaths.h"
#include "tests/integration/ztreport/ReportProgram.h"
#include "tools/ztreport/description/PoolLayout.h"

// The tables of docs/report-format.md are those that the program itself works by.

namespace {

using zt::tools::KeyLine;
using zt::tools::layoutOfType;
using zt::tools::PoolLayout;
using zt::tools::PoolPiece;
using zt::tools::ValueForm;

std::string nameOf(ValueForm form) {
  switch (form) {
    case ValueForm::Date:
      return "string, a date";
    case ValueForm::Integer:
      return "integer";
    case ValueForm::Boolean:
      return "boolean";
    case ValueForm::Enumeration:
      return "string, a name";
    case ValueForm::Text:
    case ValueForm::LongInteger:
    case ValueForm::TextList:
      break;
  }
  return "string";
}

std::string code(std::string_view text) { return "`" + std::string(text) + "`"; }

std::string rows(std::span<const KeyLine> lines, const std::string& list) {
  std::string text;
  for (const KeyLine& line : lines) {
    if (line.field.empty()) continue;
    text += "| " + list + code(line.field) + " | " + nameOf(line.form) + " | " + code(line.name) +
            " |\n";
  }
  return text;
}

std::string tableOf(const PoolLayout& layout) {
  std::string text =
      "| " + code(layout.type) + " | | kind " + code(layout.kind) + " |\n|---|---|---|\n";
  for (const PoolPiece& piece : layout.pieces) {
    switch (piece.kind) {
      case PoolPiece::Kind::Values:
        text += rows(piece.lines, "");
        break;
      case PoolPiece::Kind::Records:
        text += "| " + code(piece.field) + " | records | " + code(piece.name) + " |\n" +
                rows(piece.lines, "… ");
        break;
      case PoolPiece::Kind::False:
        text += "| " + code(piece.field) + " | boolean | |\n";
        break;
    }
  }
  return text;
}

TEST(DocumentedLayoutTest, IsThatOfTheProgram) {
  const std::string document =
      zt::test::contentOf(zt::test::paths::kSource + "/docs/report-format.md");
  for (const char* type : {"EXECUTION", "DEINSTALLATION", "INITIALIZATION", "DIAGNOSE",
                           "CONNECTIONMANAGER", "COMPUTER_SYSTEM"}) {
    const PoolLayout* const layout = layoutOfType(type);
    ASSERT_NE(layout, nullptr) << type;
    const std::string table = "\n\n" + tableOf(*layout) + "\n";
    EXPECT_NE(document.find(table), std::string::npos) << table;
  }
  EXPECT_EQ(layoutOfType("CUSTOM"), nullptr);
}

}  // namespace
