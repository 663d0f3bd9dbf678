#include <sys/random.h>

#include <array>

#include "ztportal/platform/identity/RandomUuid.h"
#include "ztportal/platform/identity/UuidText.h"

namespace zt {

ZtString randomUuid() {
  std::array<unsigned char, 16> bytes{};
  if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
    return nullptr;
  }
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0FU) | 0x40U);  // version 4: random
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3FU) | 0x80U);  // variant: RFC 4122
  return uuidText(bytes);
}

}  // namespace zt
