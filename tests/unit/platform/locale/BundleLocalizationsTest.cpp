#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "tests/support/ChildProcess.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/locale/IcuUserLocale.h"

namespace {

using zt::BundleLocalizations;
using zt::test::ChildProcess;
using zt::test::ScopedEnvironment;
using zt::test::TemporaryFolder;

constexpr const char* kTellLocalizations = "ZT_TEST_TELL_LOCALIZATIONS";

/// A copy of this program that is started with the variable set says which localizations suit and
/// does nothing else.
const bool kIsTelling = [] {
  if (std::getenv(kTellLocalizations) == nullptr) return false;
  for (const ZtString& name : BundleLocalizations().preferredLocalizations()) {
    std::fputs((std::string(name.printed()) + " ").c_str(), stdout);
  }
  std::exit(0);
}();

constexpr const char* kInfo =
    "<plist><dict><key>CFBundleDevelopmentRegion</key><string>fr</string></dict></plist>";

class BundleLocalizationsTest : public testing::Test {
 protected:
  /// What a copy of this program at `place` says to a user with these languages.
  std::string toldAt(const std::string& place, const char* languages) const {
    const std::string program = _folder.path(place);
    std::filesystem::create_directories(std::filesystem::path(program).parent_path());
    std::filesystem::copy_file("/proc/self/exe", program,
                               std::filesystem::copy_options::overwrite_existing);
    const ScopedEnvironment telling(kTellLocalizations, "1");
    const ScopedEnvironment locale("LC_ALL", "en_US.UTF-8");
    const ScopedEnvironment language("LANGUAGE", languages);
    ChildProcess copy({program});
    const std::optional<std::string> told = copy.readLine(std::chrono::seconds(60));
    EXPECT_EQ(copy.wait(), 0);
    return told.value_or("");
  }

  TemporaryFolder _folder;
};

TEST_F(BundleLocalizationsTest, AreThoseOfTheBundleAboveTheProgramThatSuitTheUser) {
  _folder.write("Setup.app/Contents/Info.plist", kInfo);
  for (const char* name : {"de", "fr", "it"}) {
    std::filesystem::create_directories(
        _folder.path("Setup.app/Contents/Resources/" + std::string(name) + ".lproj"));
  }
  EXPECT_EQ(toldAt("Setup.app/Contents/Linux/setup", "it:de"), "it de ");
  EXPECT_EQ(toldAt("Setup.app/Contents/Linux/setup", "ja"), "fr ");
}

TEST_F(BundleLocalizationsTest, AreNoneOutsideABundle) {
  EXPECT_EQ(toldAt("bin/setup", "it:de"), "");
}

}  // namespace
