#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/common/manual/Program.h"

namespace zt::manual {

/// A page in the macros of man(7).
///
///     ManualPage page("ztreport", 1, "ztportal 1.0.0", "reports a run");
///     page.section("DESCRIPTION");
///     page.text("It sends.\n\n    ztreport send report.json\n");
class ManualPage {
 public:
  ManualPage(const std::string& name, int section, const std::string& source,
             const std::string& purpose);

  void section(const std::string& heading);
  void subsection(const std::string& heading);
  /// An entry of a list: what is described, bold, and its value's type in italics.
  void entry(const std::string& term, const std::string& type, const std::string& description);
  /// Paragraphs, examples and lists, written as in a `Note`.
  void text(std::string_view lines);
  /// A usage line of its own: bold words, and what follows them.
  void usage(const std::string& words, const std::string& arguments);

  const std::string& page() const { return _page; }

 private:
  bool isAtHeading() const;
  void paragraph();
  void line(std::string_view text);
  void wrapped(const std::string& text);

  std::string _page;
};

/// The page of a program in section 1.
std::string programPage(const Program& program);

/// The page of the library in section 3, from the comment and the list of its header `ztportal.h`.
std::string libraryPage(std::string_view header, const std::string& version);

}  // namespace zt::manual
