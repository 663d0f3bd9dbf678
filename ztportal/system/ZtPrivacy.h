// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

/// Whether the user of the host agrees to its reports, see `ZtHost::setConsent`.
enum class ZtConsent : std::uint8_t {
  Unset,   ///< nobody has said; the library reports
  Given,   ///< the same, but the host knows that it need not ask
  Revoked  ///< nothing is examined, sent, saved or broadcast
};

/// What a function of the host decides about a text that is about to leave the process: keep it,
/// replace it by another one, or drop it.
///
///     if (text == "Ada") return ZtDecision::replace("somebody");
///     return ZtDecision::keep();
struct ZtDecision {
  enum class Kind : std::uint8_t { Keep, Replace, Drop };

  static ZtDecision keep() { return {}; }
  static ZtDecision replace(std::string text) { return {Kind::Replace, std::move(text)}; }
  static ZtDecision drop() { return {Kind::Drop, {}}; }

  Kind kind = Kind::Keep;
  std::string text = {};  ///< for `Replace`, in UTF-8
};

/// Decides about one value of a report: the type of its pool, its name in the report and its text
/// there ("TRUE", "7"), all in UTF-8 and before escaping. The values of the report itself have no
/// pool type: "ReportID", "MachineID", "CustomerID", "ApplicationID" and "ApplicationVersion". The
/// views end with the call.
using ZtValueFilter = std::function<ZtDecision(std::string_view poolType, std::string_view name,
                                               std::string_view value)>;

/// Decides about a whole request text (SOAP 1.1, UTF-8). The view ends with the call.
using ZtRequestHook = std::function<ZtDecision(std::string_view request)>;
