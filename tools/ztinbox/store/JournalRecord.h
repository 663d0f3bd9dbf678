#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tools/ztinbox/store/NewReport.h"

namespace zt::inbox {

/// Appends a record of `report` to `bytes`: its number, when and from whom it came, what was
/// answered, its head and its packed body. What can be read out of its text is not in it.
///
/// A record is a mark, the length of its content, a sum of it, and the content; numbers are 64 bits
/// in the machine's own order, texts a length and their bytes.
void appendRecord(std::string& bytes, const NewReport& report);

/// Takes the record at the beginning of `bytes` away from them. Nothing when they do not begin with
/// a whole record, as they do where the program or the machine was ended while it wrote one.
std::optional<NewReport> takeRecord(std::string_view& bytes);

}  // namespace zt::inbox
