#include "tools/inbox/ReportText.h"

#include <algorithm>
#include <optional>

#include "tools/inbox/Blanks.h"

namespace zt::inbox {

namespace {

constexpr auto kNowhere = std::string_view::npos;

constexpr std::string_view kPoolTag = "<Data";
constexpr std::string_view kPoolType = "Pool=\"";
constexpr std::string_view kPoolTypeEnd = "\">";
constexpr std::string_view kFieldType = "FieldType=\"";
constexpr std::string_view kDateTag = "<Date";
constexpr std::string_view kFieldTag = "<Field";
constexpr std::string_view kFieldsTag = "<Fields";
constexpr std::string_view kNameTag = "<Name";
constexpr std::string_view kValueTag = "<Value";
constexpr std::string_view kDateEnd = "</Date>";
constexpr std::string_view kFieldEnd = "</Field>";
constexpr std::string_view kArrayEnd = "</Data>";
constexpr std::string_view kNameEnd = "</Name>";
constexpr std::string_view kValueEnd = "</Value>";

struct Line {
  std::string_view text;  ///< without blanks before it and without its line end
  std::size_t indent = 0;
  std::size_t begin = 0;  ///< of `text` in the report
  std::size_t next = 0;   ///< where the next line begins

  bool isTag(std::string_view tag) const {
    if (!text.starts_with(tag)) return false;
    const std::string_view rest = text.substr(tag.size());
    return !rest.empty() && (rest.front() == ' ' || rest.front() == '>' || rest.front() == '/');
  }
};

std::optional<Line> lineAt(std::string_view report, std::size_t at) {
  if (at >= report.size()) return std::nullopt;
  Line line;
  const std::size_t end = std::min(report.find('\n', at), report.size());
  line.next = end + 1;
  line.text = report.substr(at, end - at);
  if (line.text.ends_with('\r')) line.text.remove_suffix(1);
  line.indent = blanksBefore(line.text);
  line.text.remove_prefix(line.indent);
  line.begin = at + line.indent;
  return line;
}

/// `FieldType="string"` -> string
std::string_view attribute(std::string_view tag, std::string_view name) {
  const std::size_t at = tag.find(name);
  if (at == kNowhere) return {};
  const std::string_view rest = tag.substr(at + name.size());
  return rest.substr(0, rest.find('"'));
}

class Reader {
 public:
  explicit Reader(std::string_view report) : _report(report), _lookAhead(2 * report.size()) {}

  ReportText read() {
    for (auto line = lineFrom(0); line; line = lineFrom(_next)) {
      _next = line->next;
      if (!line->text.starts_with('<')) continue;
      if (line->isTag(kPoolTag)) {
        beginPool(*line);
      } else if (!_text.pools.empty()) {
        readInPool(*line);
      }
      if (!_text.complete) break;
    }
    return std::move(_text);
  }

 private:
  struct Array {
    std::size_t indent;
    std::size_t groups = 0;  ///< those that hold a field
    bool newGroup = true;
  };
  /// A field whose end has not come.
  struct Open {
    std::size_t indent;
    ReportField field;
  };

  /// All pools of a report are indented alike.
  void beginPool(const Line& line) {
    const std::size_t typeAt = line.text.find(kPoolType);
    if (typeAt == kNowhere) return;
    if (!_text.pools.empty() && line.indent != _poolIndent) return;
    const std::size_t begin = typeAt + kPoolType.size();
    std::size_t end = line.text.rfind(kPoolTypeEnd);
    if (end == kNowhere || end < begin) end = line.text.find('"', begin);
    if (end == kNowhere) return;
    if (++_count > kMostReportFields) {
      _text.complete = false;
      return;
    }
    _poolIndent = line.indent;
    _arrays.clear();
    _open.reset();
    _text.pools.push_back({line.text.substr(begin, end - begin), {}, {}});
  }

  void readInPool(const Line& line) {
    ReportPool& pool = _text.pools.back();
    if (line.isTag(kFieldTag)) {
      beginField(line);
    } else if (line.isTag(kNameTag) && _open) {
      _open->field.name = content(line, {kNameEnd, kDateEnd}, [](const Line& next) {
        return next.isTag(kValueTag) || next.isTag(kFieldsTag) || next.text == kFieldEnd;
      });
    } else if (line.isTag(kValueTag) && _open) {
      const std::size_t indent = _open->indent;
      _open->field.value = content(line, {kValueEnd, kValueEnd}, [indent](const Line& next) {
        return next.text == kFieldEnd && next.indent == indent;
      });
      addOpen();
    } else if (line.isTag(kFieldsTag)) {
      beginGroup();
    } else if (line.text == kFieldEnd || line.text == kArrayEnd) {
      endField(line);
    } else if (line.isTag(kDateTag) && pool.date.empty() && pool.fields.empty() && !_open) {
      pool.date = content(line, {kDateEnd, kDateEnd}, [](const Line&) { return true; });
    }
  }

  void beginField(const Line& line) {
    if (_open) addOpen();
    // Where an end tag is missing, the indentation tells.
    while (!_arrays.empty() && line.indent <= _arrays.back().indent) _arrays.pop_back();
    ReportField field;
    field.type = attribute(line.text, kFieldType);
    if (field.type.empty()) field.type = "none";
    _open = Open{line.indent, field};
  }

  void beginGroup() {
    if (_open) {
      const bool array = _open->field.isArray();
      const std::size_t indent = _open->indent;
      addOpen();
      if (array && _arrays.size() < kDeepestReportField) _arrays.push_back({indent});
    } else if (!_arrays.empty()) {
      _arrays.back().newGroup = true;
    }
  }

  void endField(const Line& line) {
    if (_open) {
      addOpen();
    } else if (!_arrays.empty() && _arrays.back().indent == line.indent) {
      _arrays.pop_back();
    }
  }

  void addOpen() {
    if (++_count > kMostReportFields) {
      _text.complete = false;
    } else {
      ReportField& field = _open->field;
      field.depth = _arrays.size();
      if (!_arrays.empty()) field.group = groupOf(_arrays.back());
      _text.pools.back().fields.push_back(field);
    }
    _open.reset();
  }

  /// The line at `at`. One that was looked at ahead is mostly read next.
  std::optional<Line> lineFrom(std::size_t at) {
    if (at != _aheadAt) {
      _ahead = lineAt(_report, at);
      _aheadAt = at;
    }
    return _ahead;
  }

  static std::size_t groupOf(Array& array) {
    if (array.newGroup) ++array.groups;
    array.newGroup = false;
    return array.groups - 1;
  }

  struct EndTags {
    std::string_view first;
    std::string_view second;

    /// How many bytes of `text` stand before an end tag at its end; nothing when there is none.
    std::optional<std::size_t> cut(std::string_view text) const {
      for (const std::string_view tag : {first, second}) {
        if (text.ends_with(tag)) return text.size() - tag.size();
      }
      return std::nullopt;
    }
  };

  /// What stands in the element that begins at `line`: up to the first line that ends in an end
  /// tag and is followed by a line that `follows` accepts. Looking for it is limited, so that a
  /// report full of elements without end is not read over and over again.
  template <class Follows>
  std::string_view content(const Line& line, const EndTags& ends, Follows follows) {
    const std::size_t tagEnd = line.text.find('>');
    if (tagEnd == kNowhere || line.text[tagEnd - 1] == '/') return {};
    const std::size_t begin = line.begin + tagEnd + 1;
    std::optional<std::size_t> otherwise;
    std::size_t nextOtherwise = line.next;
    for (std::optional<Line> last = line; last;) {
      const auto following = lineFrom(last->next);
      const auto cut = ends.cut(last->text);
      if (cut && last->begin + *cut >= begin) {
        const std::size_t end = last->begin + *cut;
        if (!following || follows(*following)) {
          _next = last->next;
          return _report.substr(begin, end - begin);
        }
        if (!otherwise) {
          otherwise = end;
          nextOtherwise = last->next;
        }
      }
      const std::size_t length = last->next - last->begin;
      if (length > _lookAhead) break;
      if (last->begin != line.begin) _lookAhead -= length;
      last = following;
    }
    _next = nextOtherwise;
    if (otherwise) return _report.substr(begin, *otherwise - begin);
    return line.text.substr(tagEnd + 1);
  }

  std::string_view _report;
  ReportText _text;
  std::size_t _next = 0;
  std::size_t _lookAhead;
  std::size_t _count = 0;
  std::size_t _poolIndent = 0;
  std::vector<Array> _arrays;
  std::optional<Open> _open;
  std::optional<Line> _ahead;
  std::size_t _aheadAt = kNowhere;
};

}  // namespace

ReportText readReportText(std::string_view report) { return Reader(report).read(); }

}  // namespace zt::inbox
