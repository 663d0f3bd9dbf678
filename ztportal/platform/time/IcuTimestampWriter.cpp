#include <unicode/basictz.h>
#include <unicode/datefmt.h>
#include <unicode/simpletz.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/tztrans.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>

#include "ztportal/platform/locale/IcuLocale.h"
#include "ztportal/platform/time/CivilTime.h"
#include "ztportal/platform/time/TimeEnvironment.h"
#include "ztportal/platform/time/TimestampWriter.h"

namespace zt {
namespace {

using std::chrono::milliseconds;

/// The zone of the Unicode data that `name` stands for; null when it stands for none. Custom zones
/// ("GMT+2") do not count: in a POSIX `TZ` their sign means the opposite.
std::unique_ptr<icu::TimeZone> namedZone(std::string_view name) {
  const icu::UnicodeString identifier = icu::UnicodeString::fromUTF8(name);
  icu::UnicodeString canonical;
  UBool isSystemZone = false;
  UErrorCode status = U_ZERO_ERROR;
  icu::TimeZone::getCanonicalID(identifier, canonical, isSystemZone, status);
  if (U_FAILURE(status) || !isSystemZone) return nullptr;
  return std::unique_ptr<icu::TimeZone>(icu::TimeZone::createTimeZone(identifier));
}

/// Held while ICU or the C library finds out the time zone. ICU keeps what it finds in variables
/// that it does not guard, and calls tzset() on the way.
std::mutex& zoneLookUp() {
  static std::mutex mutex;
  return mutex;
}

/// The machine's zone; null when it is none of the Unicode data. `zoneLookUp` is held.
std::unique_ptr<icu::TimeZone> hostZone() {
  std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
  if (zone == nullptr || *zone == icu::TimeZone::getUnknown()) return nullptr;
  return zone;
}

/// The zone of the Unicode data for a value of `TZ`, null when it is unset; null where only the C
/// library knows what the value means.
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

/// What the C library says about a moment in the zone of `TZ`.
struct LocalMoment {
  milliseconds offset;  ///< east of Greenwich
  const char* zoneName;
};

LocalMoment cLibraryMoment(milliseconds sinceEpoch) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(sinceEpoch);
  const std::time_t time = seconds.count();
  std::tm local{};
  const std::lock_guard<std::mutex> lock(zoneLookUp());
  // localtime_r() alone would go on with the TZ of the first call.
  tzset();
  if (localtime_r(&time, &local) == nullptr) return {milliseconds(0), "UTC"};
  return {std::chrono::seconds(local.tm_gmtoff), local.tm_zone};
}

/// The locales to try for the user's: ICU refuses some whose name is in order, such as one with
/// digits ("@numbers=") that it does not know.
std::array<icu::Locale, 2> localesToTry(std::string_view localeName) {
  return {icu::Locale(icuLocaleName(localeName).c_str()), icu::Locale(icuLocaleName("C").c_str())};
}

/// Null when ICU lacks its data.
std::unique_ptr<icu::SimpleDateFormat> timestampFormat(const char16_t* pattern,
                                                       std::string_view localeName) {
  for (const icu::Locale& locale : localesToTry(localeName)) {
    UErrorCode status = U_ZERO_ERROR;
    auto format = std::make_unique<icu::SimpleDateFormat>(pattern, locale, status);
    if (U_SUCCESS(status) && format != nullptr) return format;
  }
  return nullptr;
}

/// Null when ICU lacks its data.
std::unique_ptr<icu::DateFormat> shortFormat(std::string_view localeName) {
  for (const icu::Locale& locale : localesToTry(localeName)) {
    std::unique_ptr<icu::DateFormat> format(icu::DateFormat::createDateTimeInstance(
        icu::DateFormat::kShort, icu::DateFormat::kShort, locale));
    if (format != nullptr) return format;
  }
  return nullptr;
}

/// Writes timestamps for one value of `TZ` and one locale, and the short dates of the same.
///
/// ICU takes some microseconds for a text that is nearly always the same few digits and a zone
/// name. So the time line is cut into windows: stretches of at most 32 days in which the zone's
/// offset does not change. ICU is asked for the first and the last millisecond of a window. If both
/// texts are what `appendCivilTime` writes for them, followed by one and the same zone name, then
/// every moment between them is written that way. That is ICU's own text, because
///
/// - digits, letters and separators that were not plain ASCII would have shown in both texts,
/// - a calendar that calls both ends by the Gregorian year, month and day calls the days between
///   them so too (others differ in the year; before the Gregorian reform both ends would differ),
/// - the time of the day follows from the offset, which is the same throughout, and
/// - the zone name depends on the offset, on summer time, and on the group of zones to which the
///   zone belongs at the time. A change of group would show as another name at one of the ends, as
///   no zone leaves a group and returns to it within 32 days.
///
/// A window that fails the test is remembered too; its moments, and those before the year 1 or
/// after 9999, are left to ICU.
class IcuTimestampWriter final : public TimestampWriter {
 public:
  explicit IcuTimestampWriter(const TimeEnvironment& environment)
      : _isTzSet(environment.zone != nullptr),
        _tz(_isTzSet ? environment.zone : ""),
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
    return (!_isTzSet || _tz == environment.zone) && _localeName == environment.localeName;
  }

  void append(std::string& text, milliseconds sinceEpoch) override {
    if (_zone == nullptr || sinceEpoch < kFirstMoment || sinceEpoch >= kPastMoment) {
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

  /// In the short styles of date and time; empty when ICU lacks its data. The zone is found out at
  /// each call, as a machine may be carried into another one.
  std::string shortText(milliseconds sinceEpoch) override {
    std::unique_ptr<icu::TimeZone> zone;
    {
      const std::lock_guard<std::mutex> lock(zoneLookUp());
      if (_shortFormat == nullptr) _shortFormat = shortFormat(_localeName);
      zone = unicodeZone(_isTzSet ? _tz.c_str() : nullptr);
    }
    if (_shortFormat == nullptr) return {};
    if (zone == nullptr) {
      const LocalMoment local = cLibraryMoment(sinceEpoch);
      zone = std::make_unique<icu::SimpleTimeZone>(static_cast<std::int32_t>(local.offset.count()),
                                                   icu::UnicodeString::fromUTF8(local.zoneName));
    }
    _shortFormat->adoptTimeZone(zone.release());
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
  // A day from the ends, so that no offset leads out of the years.
  static constexpr milliseconds kFirstMoment =
      std::chrono::sys_days(kFirstCivilYear / 1 / 2).time_since_epoch();
  static constexpr milliseconds kPastMoment =
      std::chrono::sys_days(kLastCivilYear / 12 / 31).time_since_epoch();

  const Window& windowAround(milliseconds sinceEpoch) {
    // Nearly every moment is in the window of the one before it.
    if (sinceEpoch >= _latest->begin && sinceEpoch < _latest->end) return *_latest;
    const auto stretch = (sinceEpoch - kFirstMoment) / kLongestWindow;
    Window& window = _windows[static_cast<std::size_t>(stretch) % kWindows];
    if (sinceEpoch < window.begin || sinceEpoch >= window.end) {
      const milliseconds begin = kFirstMoment + stretch * kLongestWindow;
      fill(window, begin, std::min<milliseconds>(begin + kLongestWindow, kPastMoment), sinceEpoch);
    }
    _latest = &window;
    return window;
  }

  /// Makes `window` the part of the stretch from `begin` to `end` around `moment` in which the
  /// offset is the same.
  void fill(Window& window, milliseconds begin, milliseconds end, milliseconds moment) const {
    const auto date = static_cast<UDate>(moment.count());
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
      if (sinceEpoch < kFirstMoment || sinceEpoch >= kPastMoment) return;
      appendCivilTime(text, sinceEpoch);
      text.append("GMT");
      return;
    }
    LocalMoment local{milliseconds(0), ""};
    if (_isCLibraryZone) local = cLibraryMoment(sinceEpoch);
    const UDate date =
        static_cast<UDate>(sinceEpoch.count()) + static_cast<UDate>(local.offset.count());
    icu::UnicodeString formatted;
    _format->format(date, formatted).toUTF8String(text);
    text.append(local.zoneName);
  }

  bool _isTzSet;
  std::string _tz;
  std::string _localeName;
  bool _isCLibraryZone = false;
  std::unique_ptr<icu::SimpleDateFormat> _format;
  std::unique_ptr<icu::DateFormat> _shortFormat;  ///< null until it is asked for
  const icu::BasicTimeZone* _zone = nullptr;  ///< the format's; null where nothing is arithmetic
  std::array<Window, kWindows> _windows;
  const Window* _latest = _windows.data();
  CivilTimeWriter _civilTime;
};

/// The thread's writer. When the thread ends it is given up, so that a destructor that runs still
/// later can write a timestamp, with a writer of its own.
class WriterKeeper {
 public:
  WriterKeeper() = default;
  WriterKeeper(const WriterKeeper&) = delete;
  WriterKeeper& operator=(const WriterKeeper&) = delete;
  ~WriterKeeper() { isThreadEnding = true; }

  std::shared_ptr<IcuTimestampWriter> writer;
  static thread_local bool isThreadEnding;
};

thread_local bool WriterKeeper::isThreadEnding = false;
thread_local WriterKeeper keeper;

std::shared_ptr<IcuTimestampWriter> newWriter(const TimeEnvironment& environment) {
  const std::lock_guard<std::mutex> lock(zoneLookUp());
  return std::make_shared<IcuTimestampWriter>(environment);
}

}  // namespace

std::shared_ptr<TimestampWriter> currentTimestampWriter() {
  const TimeEnvironment environment = timeEnvironment();
  if (WriterKeeper::isThreadEnding) return newWriter(environment);
  if (keeper.writer == nullptr || !keeper.writer->isFor(environment)) {
    keeper.writer = newWriter(environment);
  }
  return keeper.writer;
}

}  // namespace zt
