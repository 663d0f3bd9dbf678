#pragma once

#include <unicode/smpdtfmt.h>

#include <memory>
#include <string>

#include "ztportal/base/ZtDate.h"

// One time stamp of a report, as one would write it without the library.

namespace zt::bench {

/// By localtime_r() and strftime(), with the zone's name of the C library.
void appendByStrftime(std::string& text, ZtDate date);

/// ICU's formatter of the same pattern.
std::unique_ptr<icu::SimpleDateFormat> icuFormat(const char* zone, const char* locale);
void appendByIcu(std::string& text, const icu::SimpleDateFormat& format, ZtDate date);

}  // namespace zt::bench
