#include <algorithm>

#include "ztportal/platform/CivilTime.h"
#include "ztportal/platform/IcuUserLocale.h"
#include "ztportal/platform/linux/modules/IcuModule.h"
#include "ztportal/platform/linux/modules/Module.h"

namespace zt {

namespace {

const IcuModule* icu() { return module<IcuModule>(); }

/// Dates where nothing is known of zones and languages: in Greenwich's.
class GreenwichWriter final : public TimestampWriter {
 public:
  void append(std::string& text, std::chrono::milliseconds sinceEpoch) override {
    if (sinceEpoch < kFirst || sinceEpoch >= kPast) return;
    appendCivilTime(text, sinceEpoch);
    text.append("GMT");
  }
  std::string shortText(std::chrono::milliseconds) override { return {}; }

 private:
  static constexpr std::chrono::milliseconds kFirst =
      std::chrono::sys_days(kFirstCivilYear / 1 / 1).time_since_epoch();
  static constexpr std::chrono::milliseconds kPast =
      std::chrono::sys_days((kLastCivilYear + std::chrono::years(1)) / 1 / 1).time_since_epoch();
};

}  // namespace

std::shared_ptr<TimestampWriter> currentTimestampWriter() {
  if (icu() == nullptr) return std::make_shared<GreenwichWriter>();
  return icu()->timestampWriter();
}

ZtString IcuUserLocale::languageCode() {
  return icu() == nullptr ? ZtString() : icu()->userLocale().languageCode();
}

ZtString IcuUserLocale::countryCode() {
  return icu() == nullptr ? ZtString() : icu()->userLocale().countryCode();
}

ZtString IcuUserLocale::countryName(const ZtString& countryCode) {
  return icu() == nullptr ? ZtString() : icu()->userLocale().countryName(countryCode);
}

ZtString IcuUserLocale::canonicalLanguageIdentifier(const ZtString& localization) {
  if (icu() == nullptr) return nullptr;
  return icu()->userLocale().canonicalLanguageIdentifier(localization);
}

bool IcuUserLocale::isIsoLanguageCode(const ZtString& identifier) {
  return icu() != nullptr && icu()->userLocale().isIsoLanguageCode(identifier);
}

std::string icuLocaleName(std::string_view name) {
  return icu() == nullptr ? "en_US_POSIX" : icu()->localeName(name);
}

std::string canonicalLanguageTag(std::string_view name) {
  return icu() == nullptr ? std::string() : icu()->canonicalTag(name);
}

LanguageParts languageParts(const std::string& tag) {
  return icu() == nullptr ? LanguageParts() : icu()->parts(tag);
}

std::string withLikelySubtags(const std::string& tag) {
  return icu() == nullptr ? std::string() : icu()->withLikely(tag);
}

std::string withoutLikelySubtags(const std::string& tag) {
  return icu() == nullptr ? std::string() : icu()->withoutLikely(tag);
}

std::string lowerCase(std::string_view text) {
  if (icu() != nullptr) return icu()->lower(text);
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
  });
  return lower;
}

std::optional<std::string> utf8From(std::string_view bytes, const std::string& encoding) {
  return icu() == nullptr ? std::nullopt : icu()->utf8(bytes, encoding);
}

}  // namespace zt
