#pragma once

#include <cstdint>
#include <span>

#include "ztportal/base/ZtString.h"

namespace zt {

/// The text form of a UUID (RFC 4122) in upper case, from its bytes in the order of the text:
/// "0F1D6A52-93E5-4E0B-8D57-5A2C7D3B9E11".
ZtString uuidText(std::span<const std::uint8_t, 16> bytes);

}  // namespace zt
