// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ztportal/platform/desktop/InstalledApplications.h"
#include "ztportal/platform/desktop/RunningApplications.h"

namespace zt::test {

class FakeRunningApplications final : public RunningApplications {
 public:
  std::vector<RunningApplication> list() override {
    ++walks;
    if (onList) onList();
    return running;
  }

  std::vector<RunningApplication> running;
  std::function<void()> onList;  // may throw
  int walks = 0;
};

/// Applications by their paths, in the order of `installed`.
class FakeInstalledApplications final : public InstalledApplications {
 public:
  std::optional<std::string> withIdentifier(std::string_view bundleIdentifier) override {
    asked.emplace_back(bundleIdentifier);
    if (onAsk) onAsk(bundleIdentifier);
    const auto found = paths.find(bundleIdentifier);
    return found != paths.end() ? std::optional(found->second) : std::nullopt;
  }
  std::optional<std::string> defaultFor(std::string_view url) override {
    asked.emplace_back(url);
    if (onAsk) onAsk(url);
    const auto found = defaults.find(url);
    return found != defaults.end() ? std::optional(found->second) : std::nullopt;
  }
  std::optional<Info> info(const std::string& path) override {
    const auto found = infos.find(path);
    return found != infos.end() ? std::optional(found->second) : std::nullopt;
  }

  std::unique_ptr<InstalledApplications> prepared(
      std::span<const std::string_view> bundleIdentifiers,
      std::span<const std::string_view> urls) override {
    begun.insert(begun.end(), bundleIdentifiers.begin(), bundleIdentifiers.end());
    begun.insert(begun.end(), urls.begin(), urls.end());
    return InstalledApplications::prepared(bundleIdentifiers, urls);
  }

  /// An application that is found by its own identifier.
  void install(const std::string& identifier, const std::string& path, ZtString name,
               ZtString version) {
    paths[identifier] = path;
    infos[path] = {{"CFBundleIdentifier", identifier},
                   {"CFBundleName", std::move(name)},
                   {"CFBundleShortVersionString", std::move(version)}};
  }

  std::map<std::string, std::string, std::less<>> paths;     // by bundle identifier
  std::map<std::string, std::string, std::less<>> defaults;  // by URL
  std::map<std::string, Info> infos;                         // by path
  std::vector<std::string> asked;                            // identifiers and URLs
  std::vector<std::string> begun;               // identifiers, then URLs, of prepared()
  std::function<void(std::string_view)> onAsk;  // may throw
};

}  // namespace zt::test
