// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <span>

#include "ztportal/platform/identity/MachineIdentity.h"

namespace zt {

/// An ID that is derived from the machine ID (machine-id(5)), which must stay private: systemd
/// hashes it with this library's application ID, so that the result differs from that of other
/// applications and does not reveal the machine ID. Missing on a machine whose ID is not
/// initialised.
class LinuxMachineIdentity final : public MachineIdentity {
 public:
  /// Random. If it changes, every machine is a new one for the receivers of reports.
  static constexpr const char* kApplicationId = "9ec2c3fe78ec432995cd460970e9a439";

  ZtString platformUUID() override;
};

/// A UUID (RFC 4122) in upper case, with the bytes in the order of the text:
/// "0F1D6A52-93E5-4E0B-8D57-5A2C7D3B9E11".
ZtString uuidText(std::span<const std::uint8_t, 16> bytes);

}  // namespace zt
