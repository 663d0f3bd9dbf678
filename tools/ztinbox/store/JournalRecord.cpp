#include "tools/ztinbox/store/JournalRecord.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>

#include "tools/ztinbox/api/Moment.h"
#include "tools/ztinbox/store/PackedText.h"

namespace zt::inbox {

namespace {

using std::chrono::milliseconds;

/// "ztrecord"
constexpr std::uint64_t kMark = 0x6472'6f63'6572'747a;
constexpr std::size_t kWord = sizeof(std::uint64_t);
constexpr std::size_t kBeforeContent = 3 * kWord;

void put(std::string& bytes, std::uint64_t number) {
  bytes.append(reinterpret_cast<const char*>(&number), kWord);
}

void put(std::string& bytes, std::string_view text) {
  put(bytes, std::uint64_t{text.size()});
  bytes.append(text);
}

void set(std::string& bytes, std::size_t at, std::uint64_t number) {
  std::memcpy(bytes.data() + at, &number, kWord);
}

/// FNV-1a (draft-eastlake-fnv) by words: it tells a content that reached the disk in part, not one
/// that somebody forged.
std::uint64_t sumOf(std::string_view bytes) {
  constexpr std::uint64_t kPrime = 0x100'0000'01b3;
  std::uint64_t sum = 0xcbf2'9ce4'8422'2325;
  while (!bytes.empty()) {
    const std::size_t count = std::min(bytes.size(), kWord);
    std::uint64_t word = 0;
    std::memcpy(&word, bytes.data(), count);
    sum = (sum ^ word) * kPrime;
    bytes.remove_prefix(count);
  }
  return sum;
}

/// Takes a content apart; a part that is not there makes it fail for good.
class Parts {
 public:
  explicit Parts(std::string_view bytes) : _rest(bytes) {}

  std::uint64_t number() {
    std::uint64_t value = 0;
    const std::string_view bytes = take(kWord);
    if (!_failed) std::memcpy(&value, bytes.data(), kWord);
    return value;
  }
  std::string_view text() { return take(number()); }
  bool failed() const { return _failed; }

 private:
  std::string_view take(std::uint64_t count) {
    if (_failed || count > _rest.size()) {
      _failed = true;
      return {};
    }
    const std::string_view taken = _rest.substr(0, count);
    _rest.remove_prefix(count);
    return taken;
  }

  std::string_view _rest;
  bool _failed = false;
};

std::optional<NewReport> readContentOf(std::string_view bytes) {
  Parts parts(bytes);
  NewReport report;
  report.report.number = parts.number();
  report.report.received = Moment(milliseconds(static_cast<std::int64_t>(parts.number())));
  report.report.test = parts.number() != 0;
  const auto answer = parseAnswer(parts.text());
  report.report.sender = parts.text();
  const auto size = static_cast<std::size_t>(parts.number());
  report.head = parts.text();
  report.packedBody = parts.text();
  if (parts.failed() || !answer) return std::nullopt;
  report.report.answer = *answer;
  report.read(unpacked(report.packedBody, size));
  return report;
}

}  // namespace

void appendRecord(std::string& bytes, const NewReport& report) {
  const Report& about = report.report;
  const std::size_t begin = bytes.size();
  put(bytes, kMark);
  put(bytes, std::uint64_t{0});  // length and sum are known behind the content
  put(bytes, std::uint64_t{0});
  put(bytes, about.number);
  const auto received = std::chrono::floor<milliseconds>(about.received.time_since_epoch());
  put(bytes, static_cast<std::uint64_t>(received.count()));
  put(bytes, std::uint64_t{about.test});
  put(bytes, answerWord(about.answer));
  put(bytes, about.sender);
  put(bytes, std::uint64_t{about.size});
  put(bytes, report.head);
  put(bytes, report.packedBody);
  const std::string_view content = std::string_view(bytes).substr(begin + kBeforeContent);
  set(bytes, begin + kWord, content.size());
  set(bytes, begin + 2 * kWord, sumOf(content));
}

std::optional<NewReport> takeRecord(std::string_view& bytes) {
  Parts parts(bytes);
  const bool isMarked = parts.number() == kMark;
  const std::uint64_t length = parts.number();
  const std::uint64_t sum = parts.number();
  if (parts.failed() || !isMarked || length > bytes.size() - kBeforeContent) return std::nullopt;
  const std::string_view content = bytes.substr(kBeforeContent, length);
  if (sumOf(content) != sum) return std::nullopt;
  auto report = readContentOf(content);
  if (report) bytes.remove_prefix(kBeforeContent + length);
  return report;
}

}  // namespace zt::inbox
