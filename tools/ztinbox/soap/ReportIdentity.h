#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zt::inbox {

/// Who sent a report, and what it holds: the bytes as they stand in it, which need not be UTF-8.
struct ReportIdentity {
  std::optional<std::string> reportId;
  std::optional<std::string> machineId;
  std::optional<std::string> customerId;
  std::optional<std::string> applicationId;
  std::optional<std::string> applicationVersion;
  std::vector<std::string> pools;  ///< the pools' types, in order
};

// A page of the report list holds the identities of up to a thousand reports.
inline constexpr std::size_t kLongestIdentityValue = 1024;  ///< bytes; longer ones are cut off
inline constexpr std::size_t kMostPools = 1'000;            ///< later ones are left out

/// Reads the identity out of a report's text. Values are written into reports without escaping,
/// so a report is often no well-formed XML; it is read by its lines, each element of interest
/// standing at the beginning of one:
///
///     <CustomerID xsi:type="xsd:string">Kelvane & Sons</CustomerID>
///     <Data xsi:type="com_Pool" Pool="EXECUTION">
///
/// A report without such lines (written by something else) is searched for the same elements.
/// Takes time in proportion to the report's length, whatever it holds.
ReportIdentity readIdentity(std::string_view report);

}  // namespace zt::inbox
