#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <list>
#include <sstream>
#include <string>

#include "tests/support/Child.h"
#include "tests/support/Inbox.h"
#include "tests/support/ScopedEnvironment.h"
#include "tests/support/TemporaryFolder.h"

// What the shared library loads, and when; and what it answers where it cannot.

namespace zt::test {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class ModulesTest : public testing::Test {
 protected:
  ModulesTest() {
    for (const char* name : {"http_proxy", "all_proxy", "ALL_PROXY", "LD_LIBRARY_PATH"}) {
      _environment.emplace_back(name, nullptr);
    }
    _environment.emplace_back("XDG_DATA_HOME", data.path().c_str());
    _environment.emplace_back("TZ", "Europe/Berlin");
    _environment.emplace_back("LC_ALL", "zh_TW.UTF-8");
    _environment.emplace_back("LANGUAGE", "pt_BR:de_DE");
    _environment.emplace_back("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
  }

  /// What the host prints.
  static std::string run(const std::string& deed, const std::string& configurationUrl = "",
                         const std::string& program = ZT_MODULE_HOST) {
    Child host(program, {deed, configurationUrl});
    const std::string output = host.waitForOutput() + host.waitForErrors();
    EXPECT_EQ(host.wait(), 0) << output;
    return output;
  }

  /// The reports in the store, one after the other.
  std::string kept() const {
    std::ostringstream text;
    for (const auto& entry : fs::recursive_directory_iterator(data.path())) {
      if (entry.path().extension() == ".ztr") text << std::ifstream(entry.path()).rdbuf();
    }
    return text.str();
  }

  const TemporaryFolder data;

 private:
  std::list<ScopedEnvironment> _environment;
};

constexpr const char* kSent = "accepted\nlibcurl\nlibicui18n\nlibsystemd\nlibxml2\n";

TEST_F(ModulesTest, AHostThatNeverReportsLoadsNone) { EXPECT_EQ(run("nothing"), ""); }

TEST_F(ModulesTest, ADateNeedsTheUnicodeDataAlone) {
  EXPECT_EQ(run("date"), "1970-01-01T01:00:00.000GMT+1\nlibicui18n\n");
}

TEST_F(ModulesTest, AReportNeedsWhatItIsSentWith) {
  Inbox inbox;
  EXPECT_EQ(run("send", inbox.configurationUrl()), kSent);
  EXPECT_EQ(inbox.reports().size(), 1U);
}

TEST_F(ModulesTest, AreFoundFromAnotherWorkingDirectory) {
  const fs::path folder = fs::path(ZT_LIBRARY).parent_path();
  const ScopedEnvironment relative("LD_LIBRARY_PATH", fs::relative(folder).c_str());
  Inbox inbox;
  EXPECT_EQ(run("move", inbox.configurationUrl()), kSent);
}

TEST_F(ModulesTest, AreFoundThroughALinkToTheLibrary) {
  const TemporaryFolder links;
  fs::create_symlink(ZT_LIBRARY, links.path("libztportal.so.1"));
  const ScopedEnvironment linked("LD_LIBRARY_PATH", links.path().c_str());
  Inbox inbox;
  EXPECT_EQ(run("send", inbox.configurationUrl()), kSent);
}

TEST_F(ModulesTest, AnswerWhatTheStaticLibraryAnswers) {
  data.write("Made-up.app/Contents/Info.plist",
             "<plist version=\"1.0\"><dict><key>CFBundleName</key><string>Made up</string></dict>"
             "</plist>");
  data.write("Made-up.app/Contents/Resources/zh_TW.lproj/Texts.strings", "");
  const std::string host = data.path("Made-up.app/Contents/Linux/host");
  fs::create_directories(fs::path(host).parent_path());
  fs::copy_file(ZT_MODULE_HOST, host);
  EXPECT_THAT(
      run("ask", "", host),
      StartsWith("language: zh, TW, 台灣\n"
                 "bundle: Made up\n"
                 "document: <a Key=\"1\"><B/></a> with 1 attributes, b: 1\n"
                 "document: <?xml version='1.0' encoding='UTF-8'?><ü/> with 0 attributes, b: 0\n"
                 "number of the user's language: 32\n"));
}

TEST_F(ModulesTest, WithoutAllThingsAreAsWhereNothingIsKnown) {
  const TemporaryFolder alone;
  fs::copy_file(ZT_LIBRARY, alone.path("libztportal.so.1"));
  const ScopedEnvironment copied("LD_LIBRARY_PATH", alone.path().c_str());
  EXPECT_EQ(run("ask"),
            "language: en, (null), (null)\n"
            "bundle: zt_module_host\n"
            "no document: the library's module for XML is missing\n"
            "no document: not in its encoding, ISO-8859-1\n"
            "number of the user's language: 1\n");
}

TEST_F(ModulesTest, WithoutOneTheOthersAnswer) {
  const TemporaryFolder some;
  fs::copy_file(ZT_LIBRARY, some.path("libztportal.so.1"));
  const fs::path modules = some.path(ZT_MODULE_FOLDER);
  fs::create_directory(modules);
  fs::copy_file(fs::path(ZT_LIBRARY).parent_path() / ZT_MODULE_FOLDER / "xml.so",
                modules / "xml.so");
  const ScopedEnvironment copied("LD_LIBRARY_PATH", some.path().c_str());
  EXPECT_THAT(run("ask"), HasSubstr("document: <a Key=\"1\"><B/></a> with 1 attributes, b: 1\n"
                                    "no document: not in its encoding, ISO-8859-1\n"));
}

TEST_F(ModulesTest, WithoutThemAReportIsKept) {
  const TemporaryFolder alone;
  fs::copy_file(ZT_LIBRARY, alone.path("libztportal.so.1"));
  const ScopedEnvironment copied("LD_LIBRARY_PATH", alone.path().c_str());
  Inbox inbox;
  EXPECT_EQ(run("date"), "1970-01-01T00:00:00.000GMT\n");
  EXPECT_EQ(run("send", inbox.configurationUrl()), "kept\n");
  EXPECT_EQ(run("send", inbox.configurationUrl()), "kept\n");
  EXPECT_TRUE(inbox.reports().empty());
  const std::string reports = kept();
  const auto begin = [&](std::size_t from) { return reports.find("<SOAP-ENV:Envelope", from); };
  ASSERT_NE(begin(0), std::string::npos) << reports;
  EXPECT_NE(begin(begin(0) + 1), std::string::npos) << "each has a name of its own: " << reports;
  EXPECT_NE(reports.find("1970-01-01T00:00:00.000GMT</Date>"), std::string::npos) << reports;
}

}  // namespace
}  // namespace zt::test
