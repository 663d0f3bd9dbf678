#pragma once

#include <string_view>

namespace zt {

/// Whether `data` starts as a binary property list does.
bool isBinaryPropertyList(std::string_view data);

/// Whether the binary property list `data` has at most 1000 arrays, sets and dictionaries, and
/// each of them stands in one place only. A reader that copies them needs to know: twenty arrays
/// that each hold the next one twice are a million copies, and long chains are read recursively.
/// Writers share strings and numbers, never containers.
bool sharesNoContainer(std::string_view data);

}  // namespace zt
