#include "ztportal/platform/time/DateText.h"

#include <chrono>

#include "ztportal/platform/time/TimestampWriter.h"

namespace zt {

using std::chrono::milliseconds;

Timestamps::Timestamps() : _writer(currentTimestampWriter()) {}

void Timestamps::append(std::string& text, ZtDate date) const {
  if (!date.isNull()) _writer->append(text, milliseconds(date.milliseconds()));
}

void appendTimestamp(std::string& text, ZtDate date) {
  if (!date.isNull()) Timestamps().append(text, date);
}

std::string shortDateAndTime(ZtDate date) {
  return date.isNull() ? std::string()
                       : currentTimestampWriter()->shortText(milliseconds(date.milliseconds()));
}

}  // namespace zt
