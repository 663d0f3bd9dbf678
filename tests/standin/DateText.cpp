#include "ztportal/platform/DateText.h"

#include <chrono>

#include "ztportal/platform/CivilTime.h"

// A stand-in that knows one zone and one locale, whatever the environment names: UTC and "C".

namespace zt {

class TimestampWriter {
 public:
  void append(std::string& text, ZtDate date) {
    _civilTime.append(text, std::chrono::milliseconds(date.milliseconds()));
    text.append("UTC");
  }

 private:
  CivilTimeWriter _civilTime;
};

Timestamps::Timestamps() : _writer(std::make_shared<TimestampWriter>()) {}

void Timestamps::append(std::string& text, ZtDate date) const {
  if (!date.isNull()) _writer->append(text, date);
}

void appendTimestamp(std::string& text, ZtDate date) { Timestamps().append(text, date); }

std::string shortDateAndTime(ZtDate date) {
  constexpr std::size_t kToTheMinute = 16;
  if (date.isNull()) return {};
  std::string text;
  appendCivilTime(text, std::chrono::milliseconds(date.milliseconds()));
  text.resize(kToTheMinute);
  return text;
}

}  // namespace zt
