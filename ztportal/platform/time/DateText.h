// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "ztportal/base/ZtDate.h"

namespace zt {

/// Appends `date` to `text` by the pattern "yyyy-MM-dd'T'HH:mm:ss.SSSz" (Unicode TR 35), in the
/// process's time zone (`TZ`, or if that is unset the machine's) and the user's locale (the first
/// of `LC_ALL`, `LC_TIME` and `LANG` that is set and not empty), both as they are at the call:
///
///     2026-11-21T13:00:00.000GMT+1
///
/// For a `TZ` that is not in the Unicode data, such as the POSIX form "CET-1CEST,M3.5.0,M10.5.0/3",
/// the hour and the zone name are those of the C library.
/// A missing date appends nothing.
void appendTimestamp(std::string& text, ZtDate date);

class TimestampWriter;

/// A text with timestamps. As long as the object exists, all timestamps that its thread writes,
/// those of other objects included, are in the time zone and the locale in which it was created.
///
///     const Timestamps text;                   // looks for the zone and the locale
///     text.append(xml, start);
///     appendTimestamp(xml, end);               // in the same zone
///
/// Used and destroyed by the thread that created it, before any older one of that thread.
class Timestamps {
 public:
  Timestamps();
  Timestamps(const Timestamps&) = delete;
  Timestamps& operator=(const Timestamps&) = delete;
  ~Timestamps();
  void append(std::string& text, ZtDate date) const;

 private:
  std::shared_ptr<TimestampWriter> _writer;
};

/// `date` in the short styles of date and time of the user's locale and time zone, determined as
/// above; empty for a missing date.
std::string shortDateAndTime(ZtDate date);

}  // namespace zt
