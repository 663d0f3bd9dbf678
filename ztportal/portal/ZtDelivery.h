// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "ztportal/platform/http/ZtDeliveryError.h"

/// What became of a report.
enum class ZtDeliveryOutcome : std::uint8_t {
  NotSent,          ///< nobody has tried to send it
  Accepted,         ///< the server confirmed that it has the report
  Refused,          ///< the server's response has an HTTP status outside 200 to 299
  InvalidResponse,  ///< the status is one of success, but the response confirms nothing
  Unreachable,      ///< no complete response arrived; see `error`
  TimedOut,         ///< no complete response arrived in time
  Offline,          ///< not sent: without a configuration or the server's version
  NoTestUrl,        ///< not sent: test mode is on, and the configuration has no URL for it
  NoConsent,        ///< not sent: the user has revoked the consent
  Dropped,          ///< not sent: a hook of the host dropped it
  Unreadable        ///< not sent: the saved report cannot be read or is not well-formed XML
};

/// The receipt of one delivery: a value that a host can keep, compare and log.
///
///     if (!document->reportToServer()) {
///       const ZtDelivery delivery = document->lastDelivery();
///       if (delivery.outcome == ZtDeliveryOutcome::Refused) show(delivery.httpStatus);
///       if (delivery.savedTo.empty()) warn(delivery.saveError);
///     }
struct ZtDelivery {
  ZtDeliveryOutcome outcome = ZtDeliveryOutcome::NotSent;
  ZtDeliveryError error = ZtDeliveryError::NoError;
  /// HTTP status of the response; 0 if no complete response arrived.
  std::int32_t httpStatus = 0;
  /// One English sentence for people, without passwords; never empty after a delivery.
  std::string message;
  /// Where the request went, without user name and password; empty if it was not sent.
  std::string url;

  std::uint64_t requestBytes = 0;   ///< size of the request text
  std::uint64_t responseBytes = 0;  ///< size of the body of the response
  // How long each phase took; zero for a phase that was not reached or not needed, as on a
  // connection that was already open. Redirects count.
  std::chrono::microseconds lookupTime{0};
  std::chrono::microseconds connectTime{0};
  std::chrono::microseconds tlsTime{0};
  std::chrono::microseconds responseTime{0};  ///< from the request's first byte to the end
  std::chrono::microseconds totalTime{0};
  /// How long the server asks to wait before the next attempt (Retry-After, RFC 9110); zero if it
  /// does not.
  std::chrono::seconds retryAfter{0};

  /// The file in the store that has the report now; empty if none has.
  std::string savedTo;
  /// Why the report could not be saved, in the system's words and as its number (such as ENOSPC);
  /// empty and 0 if it was saved or did not have to be.
  std::string saveError;
  std::int32_t saveErrorNumber = 0;
};
