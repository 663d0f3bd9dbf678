#include "ztportal/platform/identity/LinuxMachineIdentity.h"

#include <sys/random.h>
#include <systemd/sd-id128.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace zt {

ZtString uuidText(std::span<const std::uint8_t, 16> bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  constexpr std::string_view kForm = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
  std::array<char, kForm.size()> text;
  std::size_t digit = 0;
  for (std::size_t i = 0; i < kForm.size(); ++i) {
    if (kForm[i] == '-') {
      text[i] = '-';
      continue;
    }
    const unsigned byte = bytes[digit / 2];
    text[i] = kDigits[digit % 2 == 0 ? byte >> 4U : byte & 0xFU];
    ++digit;
  }
  return std::string_view(text.data(), text.size());
}

ZtString LinuxMachineIdentity::platformUUID() {
  sd_id128_t application{};
  if (sd_id128_from_string(kApplicationId, &application) < 0) return nullptr;
  sd_id128_t derived{};
  if (sd_id128_get_machine_app_specific(application, &derived) < 0) return nullptr;
  return uuidText(derived.bytes);
}

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
