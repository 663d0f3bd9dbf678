#include "tools/ztreport/description/PoolLayout.h"

#include <algorithm>
#include <array>

#include "tools/ztreport/description/PoolKeys.h"

namespace zt::tools {

namespace {

using Kind = PoolPiece::Kind;

constexpr auto kExecutionLines = linesOf(kExecutionKeys);
constexpr auto kStepLines = linesOf(kStepKeys);
constexpr std::array<PoolPiece, 2> kExecution{{
    {Kind::Values, {}, {}, kExecutionLines},
    {Kind::Records, "steps", "INSTALLATIONSTEPS", kStepLines},
}};

constexpr auto kRunLines = linesOf(kRunKeys<ZtPortalPoolDeinstallation>);
constexpr std::array<PoolPiece, 1> kRun{{{Kind::Values, {}, {}, kRunLines}}};

constexpr auto kDiagnoseStepLines = linesOf(kDiagnoseStepKeys);
constexpr std::array<PoolPiece, 1> kDiagnose{
    {{Kind::Records, "steps", "DIAGNOSESTEPS", kDiagnoseStepLines}}};

constexpr auto kManagerLines = linesOf(kManagerKeys);
constexpr std::array<PoolPiece, 1> kManager{{{Kind::Values, {}, {}, kManagerLines}}};

constexpr auto kComputerLines = linesOf(kComputerKeys);
constexpr auto kBrowserLines = linesOf(kBrowserKeys);
constexpr auto kEMailClientLines = linesOf(kEMailClientKeys);
constexpr auto kFirewallLines = linesOf(kFirewallKeys);
constexpr auto kAntivirusLines = linesOf(kAntivirusKeys);
constexpr std::array<PoolPiece, 6> kComputer{{
    {Kind::Values, {}, {}, kComputerLines},
    {Kind::Records, "browsers", "BROWSERS", kBrowserLines},
    {Kind::Records, "emailClients", "EMAILCLIENTS", kEMailClientLines},
    {Kind::False, {}, "WINDOWS_FIREWALL_ENABLED", {}},
    {Kind::Records, "firewallApps", "FIREWALLAPPS", kFirewallLines},
    {Kind::Records, "antivirusApps", "ANTIVIRUSAPP", kAntivirusLines},
}};

constexpr std::array<PoolLayout, 6> kLayouts{{
    {"execution", "EXECUTION", kExecution},
    {"deinstallation", "DEINSTALLATION", kRun},
    {"initialization", "INITIALIZATION", kRun},
    {"diagnose", "DIAGNOSE", kDiagnose},
    {"connectionManager", "CONNECTIONMANAGER", kManager},
    {"computerSystem", "COMPUTER_SYSTEM", kComputer},
}};

}  // namespace

const PoolLayout* layoutOfType(std::string_view type) {
  const auto* const found =
      std::find_if(kLayouts.begin(), kLayouts.end(),
                   [type](const PoolLayout& layout) { return layout.type == type; });
  return found != kLayouts.end() ? found : nullptr;
}

}  // namespace zt::tools
