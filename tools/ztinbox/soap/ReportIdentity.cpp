#include "tools/ztinbox/soap/ReportIdentity.h"

#include <algorithm>
#include <array>

#include "tools/ztinbox/http/Blanks.h"

namespace zt::inbox {

namespace {

constexpr auto kNowhere = std::string_view::npos;

struct Header {
  std::string_view tag;
  std::string_view endTag;
  std::optional<std::string> ReportIdentity::*value;
};

constexpr std::array<Header, 5> kHeaders{{
    {"<ReportID", "</ReportID>", &ReportIdentity::reportId},
    {"<MachineID", "</MachineID>", &ReportIdentity::machineId},
    {"<CustomerID", "</CustomerID>", &ReportIdentity::customerId},
    {"<ApplicationID", "</ApplicationID>", &ReportIdentity::applicationId},
    {"<ApplicationVersion", "</ApplicationVersion>", &ReportIdentity::applicationVersion},
}};

constexpr std::string_view kPoolsTag = "<Datas";
constexpr std::string_view kPoolTag = "<Data";
constexpr std::string_view kPoolType = "Pool=\"";

bool beginsWithTag(std::string_view text, std::string_view tag) {
  if (!text.starts_with(tag)) return false;
  const std::string_view rest = text.substr(tag.size());
  return !rest.empty() && std::string_view(" \t\r\n/>").find(rest.front()) != kNowhere;
}

std::size_t findTag(std::string_view text, std::string_view tag, std::size_t from = 0) {
  for (std::size_t at = text.find(tag, from); at != kNowhere; at = text.find(tag, at + 1)) {
    if (beginsWithTag(text.substr(at), tag)) return at;
  }
  return kNowhere;
}

std::string bounded(std::string_view value) {
  return std::string(value.substr(0, kLongestIdentityValue));
}

/// The lines of a text, each without its line end.
class Lines {
 public:
  explicit Lines(std::string_view text) : _text(text) {}

  bool next() {
    if (_next > _text.size()) return false;
    _begin = _next;
    const std::size_t end = std::min(_text.find('\n', _begin), _text.size());
    _next = end + 1;
    _line = _text.substr(_begin, end - _begin);
    if (_line.ends_with('\r')) _line.remove_suffix(1);
    return true;
  }

  std::string_view line() const { return _line; }
  /// Everything behind the first `length` bytes of the line.
  std::string_view after(std::size_t length) const { return _text.substr(_begin + length); }

 private:
  std::string_view _text;
  std::string_view _line;
  std::size_t _begin = 0;
  std::size_t _next = 0;
};

/// The value of a header whose tag stands at `tagAt` of the current line. What the host wrote may
/// itself hold the end tag, so the line's last one counts; a value with line ends in it reaches
/// to the first end tag of the lines below.
std::optional<std::string> valueOnLine(const Lines& lines, std::size_t tagAt,
                                       const Header& header) {
  const std::string_view line = lines.line();
  const std::size_t tagEnd = line.find('>', tagAt);
  if (tagEnd == kNowhere) return std::nullopt;
  if (line[tagEnd - 1] == '/') return std::string();
  const std::size_t begin = tagEnd + 1;
  const std::size_t end = line.rfind(header.endTag);
  if (end != kNowhere && end >= begin) return bounded(line.substr(begin, end - begin));
  const std::string_view rest = lines.after(begin);
  const std::size_t endBelow = rest.find(header.endTag);
  return bounded(endBelow == kNowhere ? line.substr(begin) : rest.substr(0, endBelow));
}

/// Reads what stands at the beginning of lines.
class LineReader {
 public:
  explicit LineReader(ReportIdentity& identity) : _identity(identity) {}

  void read(std::string_view report) {
    Lines lines(report);
    while (lines.next()) {
      if (!mayCount(lines.line())) continue;
      const std::size_t tagAt = blanksBefore(lines.line());
      if (tagAt == lines.line().size() || lines.line()[tagAt] != '<') continue;
      if (_amongPools) {
        readPool(lines.line(), tagAt);
      } else {
        readHeader(lines, tagAt);
      }
    }
  }

 private:
  void readHeader(const Lines& lines, std::size_t tagAt) {
    const std::string_view element = lines.line().substr(tagAt);
    if (beginsWithTag(element, kPoolsTag)) {
      _amongPools = true;
      return;
    }
    for (std::size_t i = 0; i < kHeaders.size(); ++i) {
      if (_seen[i] || !beginsWithTag(element, kHeaders[i].tag)) continue;
      _seen[i] = true;
      _identity.*kHeaders[i].value = valueOnLine(lines, tagAt, kHeaders[i]);
    }
  }

  /// Most lines are fields, which stand deeper than the pools and are passed over at a glance.
  bool mayCount(std::string_view line) const {
    if (_identity.pools.empty()) return true;
    return line.size() > _indent.size() && line[_indent.size()] == '<';
  }

  /// All pools of a report are indented alike; a value of several lines that quotes a report is
  /// told from the report's own pools by that.
  void readPool(std::string_view line, std::size_t tagAt) {
    if (!beginsWithTag(line.substr(tagAt), kPoolTag)) return;
    if (_identity.pools.size() == kMostPools) return;
    const std::string_view indent = line.substr(0, tagAt);
    if (!_identity.pools.empty() && indent != _indent) return;
    const std::size_t typeAt = line.find(kPoolType, tagAt);
    if (typeAt == kNowhere) return;
    const std::size_t begin = typeAt + kPoolType.size();
    std::size_t end = line.rfind("\">");
    if (end == kNowhere || end < begin) end = line.find('"', begin);
    if (end == kNowhere) return;
    _indent = indent;
    _identity.pools.push_back(bounded(line.substr(begin, end - begin)));
  }

  ReportIdentity& _identity;
  std::array<bool, kHeaders.size()> _seen{};
  bool _amongPools = false;
  std::string_view _indent;
};

void searchHeader(std::string_view text, const Header& header, ReportIdentity& identity) {
  const std::size_t tagAt = findTag(text, header.tag);
  if (tagAt == kNowhere) return;
  const std::size_t tagEnd = text.find('>', tagAt);
  if (tagEnd == kNowhere) return;
  const std::size_t end = text.find(header.endTag, tagEnd);
  if (end == kNowhere) return;
  identity.*header.value = bounded(text.substr(tagEnd + 1, end - tagEnd - 1));
}

void searchPools(std::string_view text, ReportIdentity& identity) {
  std::size_t at = findTag(text, kPoolTag);
  while (at != kNowhere && identity.pools.size() < kMostPools) {
    const std::size_t tagEnd = text.find('>', at);
    if (tagEnd == kNowhere) return;
    const std::string_view tag = text.substr(at, tagEnd - at);
    const std::size_t typeAt = tag.find(kPoolType);
    if (typeAt != kNowhere) {
      const std::string_view type = tag.substr(typeAt + kPoolType.size());
      identity.pools.push_back(bounded(type.substr(0, type.find('"'))));
    }
    at = findTag(text, kPoolTag, tagEnd);
  }
}

}  // namespace

ReportIdentity readIdentity(std::string_view report) {
  ReportIdentity identity;
  LineReader(identity).read(report);

  const std::size_t poolsAt = std::min(findTag(report, kPoolsTag), report.size());
  for (const Header& header : kHeaders) {
    if (!(identity.*header.value)) searchHeader(report.substr(0, poolsAt), header, identity);
  }
  if (identity.pools.empty()) searchPools(report.substr(poolsAt), identity);
  return identity;
}

}  // namespace zt::inbox
