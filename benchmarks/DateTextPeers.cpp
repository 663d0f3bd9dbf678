#include "benchmarks/DateTextPeers.h"

#include <unicode/timezone.h>

#include <ctime>

namespace zt::bench {

void appendByStrftime(std::string& text, ZtDate date) {
  const std::time_t seconds = date.milliseconds() / 1000;
  const auto milliseconds = static_cast<unsigned>(date.milliseconds() % 1000);
  std::tm local{};
  localtime_r(&seconds, &local);
  char out[64];
  std::size_t length = std::strftime(out, sizeof(out), "%Y-%m-%dT%H:%M:%S", &local);
  out[length++] = '.';
  out[length++] = static_cast<char>('0' + milliseconds / 100);
  out[length++] = static_cast<char>('0' + milliseconds / 10 % 10);
  out[length++] = static_cast<char>('0' + milliseconds % 10);
  text.append(out, length).append(local.tm_zone);
}

std::unique_ptr<icu::SimpleDateFormat> icuFormat(const char* zone, const char* locale) {
  UErrorCode status = U_ZERO_ERROR;
  auto format = std::make_unique<icu::SimpleDateFormat>(
      u"yyyy-MM-dd'T'HH:mm:ss.SSSz", icu::Locale::createCanonical(locale), status);
  format->adoptTimeZone(icu::TimeZone::createTimeZone(zone));
  return format;
}

void appendByIcu(std::string& text, const icu::SimpleDateFormat& format, ZtDate date) {
  icu::UnicodeString formatted;
  format.format(static_cast<UDate>(date.milliseconds()), formatted).toUTF8String(text);
}

}  // namespace zt::bench
