// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/desktop/LinuxInstalledApplications.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "ztportal/platform/desktop/ApplicationFiles.h"
#include "ztportal/platform/desktop/ApplicationVersion.h"
#include "ztportal/platform/desktop/DesktopEntries.h"
#include "ztportal/platform/files/LinuxFiles.h"
#include "ztportal/platform/plist/Bundle.h"

namespace zt {

namespace {

/// The scheme of a URL; empty without one.
std::string schemeOf(std::string_view url) {
  const std::size_t colon = url.find(':');
  return colon != std::string_view::npos ? std::string(url.substr(0, colon)) : "";
}

}  // namespace

LinuxInstalledApplications::LinuxInstalledApplications(std::string libexec, std::string root)
    : _desktop(std::move(libexec)), _root(std::move(root)) {}

LinuxInstalledApplications::LinuxInstalledApplications(DesktopApplications desktop,
                                                       std::string root)
    : _desktop(std::move(desktop)), _root(std::move(root)) {}

std::unique_ptr<InstalledApplications> LinuxInstalledApplications::prepared(
    std::span<const std::string_view> bundleIdentifiers, std::span<const std::string_view> urls) {
  std::vector<DesktopApplications::Question> questions;
  const auto add = [&questions](DesktopApplications::Question question) {
    if (!question.empty()) questions.push_back(std::move(question));
  };
  const std::vector<std::string> folders = dataFolders(_root);
  for (const std::string_view url : urls) {
    add(DesktopApplications::questionForDefault(schemeOf(url), folders));
  }
  for (const std::string_view identifier : bundleIdentifiers) {
    for (const std::string& desktopId : desktopIdsOf(identifier)) {
      add(DesktopApplications::questionForFirstOf(desktopEntryFiles(folders, desktopId)));
    }
  }
  // The constructor is private.
  return std::unique_ptr<InstalledApplications>(
      new LinuxInstalledApplications(_desktop.asking(questions), _root));
}

std::optional<std::string> LinuxInstalledApplications::withIdentifier(
    std::string_view bundleIdentifier) {
  if (auto bundle = bundleWithIdentifier(bundleIdentifier)) return bundle;
  const std::vector<std::string> folders = dataFolders(_root);
  for (const std::string& desktopId : desktopIdsOf(bundleIdentifier)) {
    const auto application = _desktop.firstOf(desktopEntryFiles(folders, desktopId));
    if (application) return application->entry;
  }
  return std::nullopt;
}

std::optional<std::string> LinuxInstalledApplications::defaultFor(std::string_view url) {
  const auto application = _desktop.defaultFor(schemeOf(url), dataFolders(_root));
  if (!application) return std::nullopt;
  const std::optional<Bundle> bundle = Bundle::above(programOf(application->command));
  return bundle ? bundle->path() : application->entry;
}

std::optional<InstalledApplications::Info> LinuxInstalledApplications::info(
    const std::string& path) {
  if (const auto bundle = Bundle::at(path)) return bundle->info();
  if (!path.ends_with(".desktop")) return std::nullopt;
  const auto application = _desktop.firstOf({path});
  if (!application) return std::nullopt;
  const std::vector<std::string> folders = dataFolders(_root);
  Info info{{"CFBundleIdentifier",
             bundleIdentifierOf(desktopIdOf(folders, path), programOf(application->command))}};
  if (!application->name.isNull()) info["CFBundleName"] = application->name;
  const std::string version = versionOf(*application, folders, _root);
  if (!version.empty()) info["CFBundleShortVersionString"] = version;
  return info;
}

std::optional<std::string> LinuxInstalledApplications::bundleWithIdentifier(
    std::string_view bundleIdentifier) {
  LinuxFiles files;
  for (const std::string& folder :
       {homeFolder() + "/Applications", _root + "/Applications", _root + "/opt"}) {
    std::vector<std::string> names = files.list(folder).value_or(std::vector<std::string>());
    std::sort(names.begin(), names.end());
    for (const std::string& name : names) {
      std::string path = folder;
      path.append("/").append(name);
      const auto bundle = Bundle::at(path);
      if (bundle && bundle->info("CFBundleIdentifier") == bundleIdentifier) return bundle->path();
    }
  }
  return std::nullopt;
}

}  // namespace zt
