#pragma once

#include <string_view>

namespace zt {

/// Whether `data` starts as a binary property list does.
bool isBinaryPropertyList(std::string_view data);

/// Whether a reader that copies each object to every place where it stands comes to an end with the
/// binary property list `data`: there are at most 1000 arrays, sets and dictionaries, each of them
/// stands in one place only, and the copies of its texts and data come to 1 MB or ten times its
/// length, whichever is more, at most. Twenty arrays that each hold the next one twice are a
/// million copies, and long chains are read recursively. Writers share strings and numbers, never
/// containers.
bool copiesWithinMeasure(std::string_view data);

/// Whether the keys of all dictionaries in such a list are texts without characters of the number
/// 0. libplist ends the process over a key in UTF-16 with one, and cuts off others there.
bool keysArePlainTexts(std::string_view data);

}  // namespace zt
