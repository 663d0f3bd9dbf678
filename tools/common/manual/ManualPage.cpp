#include "tools/common/manual/ManualPage.h"

#include <algorithm>
#include <cctype>

namespace zt::manual {

namespace {

// When the words of the pages last changed: a page that shows the day of its build would be another
// one every day.
constexpr const char* kDate = "2026-11-21";

/// What roff would take for something else, by its name (groff_char(7)).
struct Escape {
  char character;
  std::string_view text;
};
constexpr Escape kEscapes[] = {{'\\', "\\(rs"}, {'-', "\\-"},   {'"', "\\(dq"}, {'\'', "\\(aq"},
                               {'`', "\\(ga"},  {'^', "\\(ha"}, {'~', "\\(ti"}};

std::string escaped(std::string_view text) {
  std::string result;
  for (const char letter : text) {
    const auto* const escape = std::ranges::find(kEscapes, letter, &Escape::character);
    if (escape == std::end(kEscapes)) {
      result += letter;
    } else {
      result += escape->text;
    }
  }
  return result;
}

std::string capitals(std::string text) {
  std::ranges::transform(text, text.begin(), [](unsigned char letter) {
    return static_cast<char>(std::toupper(letter));
  });
  return text;
}

std::string_view nextLine(std::string_view& lines) {
  const std::size_t end = lines.find('\n');
  const std::string_view line = lines.substr(0, end);
  lines.remove_prefix(end == std::string_view::npos ? lines.size() : end + 1);
  return line;
}

}  // namespace

ManualPage::ManualPage(const std::string& name, int section, const std::string& source,
                       const std::string& purpose) {
  _page = ".TH " + capitals(name) + " " + std::to_string(section) + " " + kDate + " \"" + source +
          "\"\n";
  this->section("NAME");
  wrapped(name + " \\- " + escaped(purpose));
}

bool ManualPage::isAtHeading() const {
  const std::size_t last = _page.rfind('\n', _page.size() - 2) + 1;
  return _page.compare(last, 3, ".SH") == 0 || _page.compare(last, 3, ".SS") == 0;
}

void ManualPage::paragraph() {
  if (!isAtHeading()) _page += ".PP\n";
}

void ManualPage::section(const std::string& heading) { _page += ".SH " + escaped(heading) + "\n"; }

void ManualPage::subsection(const std::string& heading) {
  _page += ".SS " + escaped(heading) + "\n";
}

void ManualPage::line(std::string_view text) {
  const std::string content = escaped(text);
  // A line that begins so would be a request.
  if (content.starts_with('.')) _page += "\\&";
  _page += content + "\n";
}

/// Escaped `text` in lines of 80 characters at most, which is what an editor of such pages expects.
void ManualPage::wrapped(const std::string& text) {
  constexpr std::size_t kLongest = 80;
  std::size_t length = 0;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find(' ', begin), text.size());
    const std::string word = text.substr(begin, end - begin);
    begin = end + 1;
    if (length != 0 && length + 1 + word.size() > kLongest) {
      _page += '\n';
      length = 0;
    }
    if (length != 0) _page += ' ';
    if (length == 0 && word.starts_with('.')) _page += "\\&";
    _page += word;
    length += word.size() + 1;
  }
  _page += '\n';
}

void ManualPage::entry(const std::string& term, const std::string& type,
                       const std::string& description) {
  _page += ".TP\n\\fB" + escaped(term) + "\\fR";
  if (!type.empty()) _page += " \\fI" + escaped(type) + "\\fR";
  _page += "\n";
  wrapped(escaped(description));
}

void ManualPage::usage(const std::string& words, const std::string& arguments) {
  if (!isAtHeading()) _page += ".br\n";
  wrapped("\\fB" + escaped(words) + "\\fR" + escaped(arguments));
}

void ManualPage::text(std::string_view lines) {
  constexpr std::string_view kExample = "    ";
  std::string prose;
  bool isInExample = false;
  const auto endProse = [&] {
    if (prose.empty()) return;
    paragraph();
    wrapped(escaped(prose));
    prose.clear();
  };
  const auto endExample = [&] {
    if (isInExample) _page += ".EE\n";
    isInExample = false;
  };
  while (!lines.empty()) {
    const std::string_view text = nextLine(lines);
    if (text.starts_with(kExample)) {
      endProse();
      if (!isInExample) {
        paragraph();
        _page += ".EX\n";
      }
      isInExample = true;
      line(text.substr(kExample.size()));
      continue;
    }
    endExample();
    if (text.empty() || text.starts_with("- ")) endProse();
    if (text.starts_with("- ")) {
      const std::size_t colon = text.find(": ");
      entry(std::string(text.substr(2, colon - 2)), "", std::string(text.substr(colon + 2)));
    } else if (!text.empty()) {
      (prose += prose.empty() ? "" : " ") += text;
    }
  }
  endProse();
  endExample();
}

}  // namespace zt::manual
