#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zt::inbox {

/// `text` in the LZ4 block format. Reports repeat themselves: packed they are about a tenth, which
/// is what makes writing them to the disk quick.
std::string packed(std::string_view text);

/// The `size` bytes of which packed() gave `bytes`. Throws DatabaseFault when it gave others.
std::string unpacked(std::string_view bytes, std::size_t size);

}  // namespace zt::inbox
