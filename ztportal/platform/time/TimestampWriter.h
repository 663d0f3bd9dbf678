#pragma once

#include <chrono>
#include <memory>
#include <string>

namespace zt {

/// Writes moments (milliseconds since the beginning of 1970 in UTC) for one time zone and one
/// locale. Used by one thread.
class TimestampWriter {
 public:
  virtual ~TimestampWriter() = default;

  /// Appends the moment by the pattern of `appendTimestamp` in DateText.h.
  virtual void append(std::string& text, std::chrono::milliseconds sinceEpoch) = 0;
  /// The moment in the short styles of date and time.
  virtual std::string shortText(std::chrono::milliseconds sinceEpoch) = 0;
};

/// The writer for the time zone and the locale that the environment names at the moment. It is the
/// calling thread's, kept for its next call.
std::shared_ptr<TimestampWriter> currentTimestampWriter();

}  // namespace zt
