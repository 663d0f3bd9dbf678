// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/time/DateText.h"

#include <sys/stat.h>
#include <sys/types.h>
#include <unicode/basictz.h>
#include <unicode/datefmt.h>
#include <unicode/simpletz.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/tztrans.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <string_view>
#include <utility>

#include "ztportal/platform/locale/PosixLocale.h"
#include "ztportal/platform/time/CivilTime.h"

namespace zt {

namespace {

using std::chrono::milliseconds;

/// The state of the file that holds the machine's time zone; all zero if there is none. Another
/// zone is another file behind a link, or the same one written anew.
struct ZoneFile {
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  std::chrono::nanoseconds modified{0};
  std::chrono::nanoseconds changed{0};

  static ZoneFile ofTheMachine() {
    struct stat status {};
    if (::stat("/etc/localtime", &status) != 0) return {};
    return {status.st_dev, status.st_ino, status.st_size, sinceEpoch(status.st_mtim),
            sinceEpoch(status.st_ctim)};
  }
  bool operator==(const ZoneFile&) const = default;

 private:
  static std::chrono::nanoseconds sinceEpoch(const timespec& time) {
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
  }
};

/// What decides how dates are written. Valid until the environment changes.
struct TimeEnvironment {
  const char* zone = std::getenv("TZ");
  ZoneFile zoneFile = zone == nullptr ? ZoneFile::ofTheMachine() : ZoneFile();
  std::string_view localeName = userLocaleName("LC_TIME");
};

/// The zone of the Unicode data with the name `name`; null if there is none. Custom zones ("GMT+2")
/// do not count: in a POSIX `TZ` their sign has the opposite meaning.
std::unique_ptr<icu::TimeZone> namedZone(std::string_view name) {
  const icu::UnicodeString identifier = icu::UnicodeString::fromUTF8(name);
  icu::UnicodeString canonical;
  UBool isSystemZone = false;
  UErrorCode status = U_ZERO_ERROR;
  icu::TimeZone::getCanonicalID(identifier, canonical, isSystemZone, status);
  if (U_FAILURE(status) || !isSystemZone) return nullptr;
  return std::unique_ptr<icu::TimeZone>(icu::TimeZone::createTimeZone(identifier));
}

/// Held while ICU or the C library determines the time zone. ICU stores it in variables that it
/// does not guard, and calls tzset().
std::mutex& zoneLookUp() {
  static std::mutex mutex;
  return mutex;
}

/// The machine's zone; null if the Unicode data has no such zone. `zoneLookUp` is held.
std::unique_ptr<icu::TimeZone> hostZone() {
  std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
  if (zone == nullptr || *zone == icu::TimeZone::getUnknown()) return nullptr;
  return zone;
}

/// The zone of the Unicode data for `tz`, the value of `TZ` or null if that is unset; null if only
/// the C library understands the value.
std::unique_ptr<icu::TimeZone> unicodeZone(const char* tz) {
  if (tz == nullptr) return hostZone();
  std::string_view name = tz;
  if (name.empty()) return namedZone("UTC");
  if (name.front() == ':') name.remove_prefix(1);
  constexpr std::string_view kZoneFolder = "/zoneinfo/";
  if (name.starts_with('/')) {
    const std::size_t folder = name.find(kZoneFolder);
    if (folder != std::string_view::npos) name.remove_prefix(folder + kZoneFolder.size());
  }
  constexpr std::string_view kWithoutLeapSeconds = "posix/";
  if (name.starts_with(kWithoutLeapSeconds)) name.remove_prefix(kWithoutLeapSeconds.size());
  return namedZone(name);
}

/// The local time of a point in time, according to the C library.
struct LocalTime {
  milliseconds offset;  ///< east of Greenwich
  const char* zoneName;
};

/// In the zone that the last tzset() found.
LocalTime cLibraryTime(milliseconds sinceEpoch) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(sinceEpoch);
  const std::time_t time = seconds.count();
  std::tm local{};
  const std::lock_guard<std::mutex> lock(zoneLookUp());
  if (localtime_r(&time, &local) == nullptr) return {milliseconds(0), "UTC"};
  return {std::chrono::seconds(local.tm_gmtoff), local.tm_zone};
}

/// What `make` returns for the locale, or else for the "C" locale: ICU refuses some valid names,
/// such as one with digits ("@numbers=") that it does not know. Null if ICU lacks its data.
template <class Make>
auto formatFor(std::string_view localeName, Make make) {
  auto format = make(icu::Locale(icuLocaleName(localeName).c_str()));
  return format != nullptr ? std::move(format) : make(icu::Locale(icuLocaleName("C").c_str()));
}

std::unique_ptr<icu::SimpleDateFormat> timestampFormat(const char16_t* pattern,
                                                       std::string_view localeName) {
  return formatFor(localeName, [pattern](const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    auto format = std::make_unique<icu::SimpleDateFormat>(pattern, locale, status);
    return U_SUCCESS(status) ? std::move(format) : nullptr;
  });
}

std::unique_ptr<icu::DateFormat> shortFormat(std::string_view localeName) {
  return formatFor(localeName, [](const icu::Locale& locale) {
    return std::unique_ptr<icu::DateFormat>(icu::DateFormat::createDateTimeInstance(
        icu::DateFormat::kShort, icu::DateFormat::kShort, locale));
  });
}

}  // namespace

/// Writes timestamps, and short dates, in one time zone and one locale.
///
/// ICU takes some microseconds for a string that is nearly always the same few digits and a zone
/// name. So time is divided into windows of at most 32 days in which the zone's offset does not
/// change. ICU formats the first and the last millisecond of a window. If both results are what
/// `appendCivilTime` writes, followed by the same zone name, every point in time between them is
/// written that way. That equals ICU's result, because
///
/// - digits, letters and separators that are not plain ASCII would show at both ends,
/// - a calendar whose dates are Gregorian at both ends is Gregorian between them (others differ in
///   the year; before the Gregorian reform both ends would differ),
/// - the time of day follows from the offset, which is constant, and
/// - the zone name depends on the offset, on summer time, and on the zone's group at the time. A
///   change of group would show as another name at one of the ends, as no zone leaves a group and
///   returns to it within 32 days.
///
/// A window that fails the test is remembered, too. ICU writes the timestamps in it, and those
/// before the year 1 and after 9999.
class TimestampWriter {
 public:
  explicit TimestampWriter(const TimeEnvironment& environment)
      : _isTzSet(environment.zone != nullptr),
        _tz(_isTzSet ? environment.zone : ""),
        _zoneFile(environment.zoneFile),
        _localeName(environment.localeName) {
    std::unique_ptr<icu::TimeZone> zone = unicodeZone(environment.zone);
    _isCLibraryZone = zone == nullptr;
    _zone = dynamic_cast<const icu::BasicTimeZone*>(zone.get());

    _format = timestampFormat(
        _isCLibraryZone ? u"yyyy-MM-dd'T'HH:mm:ss.SSS" : u"yyyy-MM-dd'T'HH:mm:ss.SSSz",
        _localeName);
    if (_format == nullptr) {
      _zone = nullptr;
    } else if (_isCLibraryZone) {
      _format->setTimeZone(*icu::TimeZone::getGMT());
    } else {
      _format->adoptTimeZone(zone.release());
    }
  }

  bool isFor(const TimeEnvironment& environment) const {
    if (_isTzSet != (environment.zone != nullptr)) return false;
    return (!_isTzSet || _tz == environment.zone) && _zoneFile == environment.zoneFile &&
           _localeName == environment.localeName;
  }

  /// Makes the C library use the zone, if it is one that only the C library understands.
  void beginText() const {
    if (!_isCLibraryZone) return;
    const std::lock_guard<std::mutex> lock(zoneLookUp());
    tzset();
  }

  void append(std::string& text, milliseconds sinceEpoch) {
    if (_zone == nullptr || sinceEpoch < kFirst || sinceEpoch >= kEnd) {
      appendByIcu(text, sinceEpoch);
      return;
    }
    const Window& window = windowAround(sinceEpoch);
    if (!window.isArithmetic) {
      appendByIcu(text, sinceEpoch);
      return;
    }
    _civilTime.append(text, sinceEpoch + window.offset);
    text.append(window.zoneName);
  }

  /// In the short styles of date and time; empty if ICU lacks its data.
  std::string shortText(milliseconds sinceEpoch) {
    if (_format == nullptr) return {};
    if (_shortFormat == nullptr) {
      const std::lock_guard<std::mutex> lock(zoneLookUp());
      _shortFormat = shortFormat(_localeName);
      if (_shortFormat == nullptr) return {};
      _shortFormat->setTimeZone(_format->getTimeZone());
    }
    if (_isCLibraryZone) {
      const LocalTime local = cLibraryTime(sinceEpoch);
      _shortFormat->setTimeZone(icu::SimpleTimeZone(static_cast<std::int32_t>(local.offset.count()),
                                                    icu::UnicodeString::fromUTF8(local.zoneName)));
    }
    icu::UnicodeString formatted;
    std::string text;
    _shortFormat->format(static_cast<UDate>(sinceEpoch.count()), formatted).toUTF8String(text);
    return text;
  }

 private:
  struct Window {
    milliseconds begin{0};
    milliseconds end{0};
    milliseconds offset{0};
    bool isArithmetic = false;
    std::string zoneName;
  };

  static constexpr std::chrono::days kLongestWindow{32};
  static constexpr std::size_t kWindows = 16;
  // A day from the ends, so that no offset leads to another year.
  static constexpr milliseconds kFirst =
      std::chrono::sys_days(kFirstCivilYear / 1 / 2).time_since_epoch();
  static constexpr milliseconds kEnd =
      std::chrono::sys_days(kLastCivilYear / 12 / 31).time_since_epoch();

  const Window& windowAround(milliseconds sinceEpoch) {
    // Nearly every timestamp is in the window of the previous one.
    if (sinceEpoch >= _latest->begin && sinceEpoch < _latest->end) return *_latest;
    const auto number = (sinceEpoch - kFirst) / kLongestWindow;
    Window& window = _windows[static_cast<std::size_t>(number) % kWindows];
    if (sinceEpoch < window.begin || sinceEpoch >= window.end) {
      const milliseconds begin = kFirst + number * kLongestWindow;
      fill(window, begin, std::min<milliseconds>(begin + kLongestWindow, kEnd), sinceEpoch);
    }
    _latest = &window;
    return window;
  }

  /// Makes `window` the part of `begin` to `end` around `inside` in which the offset is constant.
  void fill(Window& window, milliseconds begin, milliseconds end, milliseconds inside) const {
    const auto date = static_cast<UDate>(inside.count());
    icu::TimeZoneTransition transition;
    if (_zone->getPreviousTransition(date, true, transition)) {
      begin = std::max(begin, milliseconds(static_cast<std::int64_t>(transition.getTime())));
    }
    if (_zone->getNextTransition(date, false, transition)) {
      end = std::min(end, milliseconds(static_cast<std::int64_t>(transition.getTime())));
    }
    std::int32_t standard = 0;
    std::int32_t summer = 0;
    UErrorCode status = U_ZERO_ERROR;
    _zone->getOffset(date, false, standard, summer, status);

    window = Window{};
    if (U_FAILURE(status)) return;
    const milliseconds offset(standard + summer);
    const std::string first = icuText(begin);
    const std::string last = icuText(end - milliseconds(1));
    std::string expectedFirst;
    appendCivilTime(expectedFirst, begin + offset);
    std::string zoneName = first.substr(std::min(expectedFirst.size(), first.size()));
    expectedFirst.append(zoneName);
    std::string expectedLast;
    appendCivilTime(expectedLast, end - milliseconds(1) + offset);
    expectedLast.append(zoneName);
    const bool isArithmetic = first == expectedFirst && last == expectedLast;
    window = {begin, end, offset, isArithmetic, std::move(zoneName)};
  }

  std::string icuText(milliseconds sinceEpoch) const {
    std::string text;
    appendByIcu(text, sinceEpoch);
    return text;
  }

  void appendByIcu(std::string& text, milliseconds sinceEpoch) const {
    if (_format == nullptr) {
      // ICU lacks its data.
      if (sinceEpoch < kFirst || sinceEpoch >= kEnd) return;
      appendCivilTime(text, sinceEpoch);
      text.append("GMT");
      return;
    }
    LocalTime local{milliseconds(0), ""};
    if (_isCLibraryZone) local = cLibraryTime(sinceEpoch);
    const UDate date =
        static_cast<UDate>(sinceEpoch.count()) + static_cast<UDate>(local.offset.count());
    icu::UnicodeString formatted;
    _format->format(date, formatted).toUTF8String(text);
    text.append(local.zoneName);
  }

  bool _isTzSet;
  std::string _tz;
  ZoneFile _zoneFile;
  std::string _localeName;
  bool _isCLibraryZone = false;
  std::unique_ptr<icu::SimpleDateFormat> _format;
  std::unique_ptr<icu::DateFormat> _shortFormat;  ///< null until it is needed
  const icu::BasicTimeZone* _zone = nullptr;      ///< the format's; null if ICU is always needed
  std::array<Window, kWindows> _windows;
  const Window* _latest = _windows.data();
  CivilTimeWriter _civilTime;
};

namespace {

/// The thread's writer. Destructors that run after this one at the end of the thread can still
/// write timestamps, with a writer of their own.
class WriterKeeper {
 public:
  WriterKeeper() = default;
  WriterKeeper(const WriterKeeper&) = delete;
  WriterKeeper& operator=(const WriterKeeper&) = delete;
  ~WriterKeeper() { isThreadEnding = true; }

  std::shared_ptr<TimestampWriter> writer;
  static thread_local bool isThreadEnding;
};

thread_local bool WriterKeeper::isThreadEnding = false;
thread_local WriterKeeper writerKeeper;

std::shared_ptr<TimestampWriter> newWriter(const TimeEnvironment& environment) {
  const std::lock_guard<std::mutex> lock(zoneLookUp());
  return std::make_shared<TimestampWriter>(environment);
}

/// The calling thread's writer for the time zone and the locale that are in force now.
std::shared_ptr<TimestampWriter> writerForNewText() {
  const TimeEnvironment environment;
  const bool isKept = !WriterKeeper::isThreadEnding;
  std::shared_ptr<TimestampWriter> writer = isKept ? writerKeeper.writer : nullptr;
  if (writer == nullptr || !writer->isFor(environment)) {
    writer = newWriter(environment);
    if (isKept) writerKeeper.writer = writer;
  }
  writer->beginText();
  return writer;
}

/// The one with which the text that this thread is writing was begun; null between two texts.
constinit thread_local const Timestamps* textsOwn = nullptr;

}  // namespace

Timestamps::Timestamps() : _writer(textsOwn != nullptr ? textsOwn->_writer : writerForNewText()) {
  if (textsOwn == nullptr) textsOwn = this;
}

Timestamps::~Timestamps() {
  if (textsOwn == this) textsOwn = nullptr;
}

void Timestamps::append(std::string& text, ZtDate date) const {
  if (!date.isNull()) _writer->append(text, milliseconds(date.milliseconds()));
}

void appendTimestamp(std::string& text, ZtDate date) {
  if (!date.isNull()) Timestamps().append(text, date);
}

std::string shortDateAndTime(ZtDate date) {
  return date.isNull() ? std::string()
                       : writerForNewText()->shortText(milliseconds(date.milliseconds()));
}

}  // namespace zt
