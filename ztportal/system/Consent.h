// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ztportal/system/ZtPrivacy.h"

namespace zt {

/// Reads the consent anew: another process may have changed it.
ZtConsent readConsent();

/// False if it cannot be kept. A revocation is then valid for this process, until a consent can be
/// kept.
bool keepConsent(ZtConsent consent);

/// Whether nothing may be examined, sent, saved or broadcast. Costs one stat() without a consent.
inline bool consentIsRevoked() { return readConsent() == ZtConsent::Revoked; }

}  // namespace zt
