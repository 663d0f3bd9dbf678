#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ztportal/platform/Platform.h"
#include "ztportal/platform/files/FakeFiles.h"
#include "ztportal/platform/http/FakeHttpTransport.h"

namespace zt::test {

/// The user domain's folder is `folder`; without one the platform reports an error. From the
/// `movesAt`th question on, if that is not 0, it is `moved`.
class FakeSupportFolder final : public SupportFolder {
 public:
  std::optional<std::string> path(std::int16_t domain) override {
    askedDomains.push_back(domain);
    if (askedDomains.size() == movesAt) folder = moved;
    return domain == kUserDomain ? folder : std::nullopt;
  }

  std::optional<std::string> folder = "/home/user/.local/share";
  std::size_t movesAt = 0;
  std::optional<std::string> moved;
  std::vector<std::int16_t> askedDomains;
};

class FakeRunningApplications final : public RunningApplications {
 public:
  std::vector<RunningApplication> list() override {
    ++walks;
    if (onList) onList();
    return running;
  }

  std::vector<RunningApplication> running;
  std::function<void()> onList;  // may raise
  int walks = 0;
};

class FakeBroadcast final : public Broadcast {
 public:
  struct Message {
    ZtString name;
    ZtString object;
    std::map<std::string, ZtString> userInfo;
  };

  void post(const ZtString& name, const ZtString& object,
            const std::map<std::string, ZtString>& userInfo) override {
    posted.push_back({name, object, userInfo});
    if (onPost) onPost();
  }

  std::vector<Message> posted;
  std::function<void()> onPost;  // may raise
};

/// Answers by a table; a selector that is not in it fails.
class FakeGestalt final : public Gestalt {
 public:
  std::optional<std::int32_t> ask(std::uint32_t selector) override {
    asked.push_back(selector);
    const auto found = answers.find(selector);
    return found != answers.end() ? std::optional(found->second) : std::nullopt;
  }

  std::map<std::uint32_t, std::int32_t> answers;
  std::vector<std::uint32_t> asked;
};

class FakeMachineIdentity final : public MachineIdentity {
 public:
  ZtString platformUUID() override { return uuid; }

  ZtString uuid = "564D1E2A-77C0-4B0E-9A55-0F1D6A5293E5";
};

class FakeLocalizations final : public Localizations {
 public:
  std::vector<ZtString> preferredLocalizations() override { return preferred; }

  std::vector<ZtString> preferred;
};

/// A German locale, unless a test says otherwise. Languages are canonical as they are.
class FakeUserLocale final : public UserLocale {
 public:
  ZtString languageCode() override { return language; }
  ZtString countryCode() override { return country; }
  ZtString countryName(const ZtString& countryCode) override {
    askedCountries.push_back(countryCode);
    return countryCode == country ? name : ZtString();
  }
  ZtString canonicalLanguageIdentifier(const ZtString& localization) override {
    const auto found = canonical.find(std::string(localization.view()));
    return found != canonical.end() ? found->second : localization;
  }
  bool isIsoLanguageCode(const ZtString& identifier) override {
    return std::find(isoCodes.begin(), isoCodes.end(), identifier) != isoCodes.end();
  }

  ZtString language = "de";
  ZtString country = "DE";
  ZtString name = "Deutschland";
  std::map<std::string, ZtString> canonical;
  std::vector<ZtString> isoCodes{"de", "en", "fr", "zh"};
  std::vector<ZtString> askedCountries;
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
  std::vector<std::string> begun;                            // identifiers, then URLs, to be asked
  std::function<void(std::string_view)> onAsk;               // may raise
};

class FakeChildProcess final : public ChildProcess {
 public:
  struct Run {
    std::string program;
    std::vector<std::string> arguments;
  };

  std::string output(const std::string& program,
                     const std::vector<std::string>& arguments) override {
    runs.push_back({program, arguments});
    if (onRun) onRun();
    return answer;
  }

  std::string answer = "1000\n";
  std::vector<Run> runs;
  std::function<void()> onRun;  // may raise
};

/// A machine that a test makes up. In force from its construction to its end.
///
///     FakePlatform platform;
///     platform.http_.answer = [](const auto& asked) { return HttpResponse{200, "<versioninfo/>"};
///     };
class FakePlatform final : public Platform {
 public:
  HttpTransport& http() override { return http_; }
  Files& files() override { return replacedFiles != nullptr ? *replacedFiles : files_; }
  SupportFolder& supportFolder() override { return supportFolder_; }
  RunningApplications& runningApplications() override { return runningApplications_; }
  Broadcast& broadcast() override { return broadcast_; }
  Gestalt& gestalt() override { return gestalt_; }
  MachineIdentity& machineIdentity() override { return machineIdentity_; }
  Localizations& localizations() override { return localizations_; }
  UserLocale& userLocale() override { return userLocale_; }
  InstalledApplications& installedApplications() override { return installedApplications_; }
  ChildProcess& childProcess() override { return childProcess_; }

  FakeHttpTransport http_;
  FakeFiles files_;
  Files* replacedFiles = nullptr;  // in the place of files_, for faults and for real files
  FakeSupportFolder supportFolder_;
  FakeRunningApplications runningApplications_;
  FakeBroadcast broadcast_;
  FakeGestalt gestalt_;
  FakeMachineIdentity machineIdentity_;
  FakeLocalizations localizations_;
  FakeUserLocale userLocale_;
  FakeInstalledApplications installedApplications_;
  FakeChildProcess childProcess_;

 private:
  Substitute _inForce{*this};
};

}  // namespace zt::test
