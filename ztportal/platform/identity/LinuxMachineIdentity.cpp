// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/identity/LinuxMachineIdentity.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <systemd/sd-id128.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <system_error>

#include "ztportal/base/FileDescriptor.h"
#include "ztportal/base/Log.h"
#include "ztportal/base/RegularFile.h"

namespace zt {

namespace {

using UuidBytes = std::array<std::uint8_t, 16>;

/// Random bytes of the kernel. Old kernels and some sandboxes have no getrandom(2).
std::optional<UuidBytes> randomBytes() {
  UuidBytes bytes{};
  constexpr auto kAll = static_cast<ssize_t>(std::tuple_size_v<UuidBytes>);
  if (::getrandom(bytes.data(), bytes.size(), 0) == kAll) return bytes;
  const FileDescriptor device(::open("/dev/urandom", O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  const bool isDevice = ::fstat(device.number(), &status) == 0 && S_ISCHR(status.st_mode);
  if (isDevice && ::read(device.number(), bytes.data(), bytes.size()) == kAll) return bytes;
  return std::nullopt;
}

/// A random UUID made by the kernel (random(4)), for a process that sees no devices.
ZtString kernelUuid() {
  constexpr std::size_t kSize = 36;
  std::optional<std::string> text = regularFile("/proc/sys/kernel/random/uuid", kSize + 1);
  if (!text || text->size() < kSize) return nullptr;
  text->resize(kSize);
  std::transform(text->begin(), text->end(), text->begin(), [](char digit) {
    return digit >= 'a' && digit <= 'f' ? static_cast<char>(digit - 'a' + 'A') : digit;
  });
  return *text;
}

}  // namespace

ZtString uuidText(std::span<const std::uint8_t, 16> bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  constexpr std::string_view kUuidForm = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
  std::array<char, kUuidForm.size()> text;
  std::size_t digit = 0;
  for (std::size_t i = 0; i < kUuidForm.size(); ++i) {
    if (kUuidForm[i] == '-') {
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
  const int result = sd_id128_get_machine_app_specific(application, &derived);
  if (result < 0) {
    logOnce(ZtLogLevel::Warning, "inventory",
            "this machine has no ID: ", std::generic_category().message(-result));
    return nullptr;
  }
  return uuidText(derived.bytes);
}

ZtString randomUuid() {
  std::optional<UuidBytes> bytes = randomBytes();
  if (!bytes) return kernelUuid();
  bytes->at(6) = static_cast<std::uint8_t>((bytes->at(6) & 0x0FU) | 0x40U);  // version 4: random
  bytes->at(8) = static_cast<std::uint8_t>((bytes->at(8) & 0x3FU) | 0x80U);  // variant: RFC 4122
  return uuidText(*bytes);
}

}  // namespace zt
