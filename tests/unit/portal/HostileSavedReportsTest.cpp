#include <string>
#include <utility>

#include "tests/support/HostileXml.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/portal/PortalTest.h"

// Files that stand in the store, but were not written by the library.

namespace zt::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using std::string_literals::operator""s;

class HostileSavedReportsTest : public PortalTest {
 protected:
  std::string stored(const std::string& content) {
    const std::string path = std::string(ZtPortalData::reportFolder().view()) + "/one.ztr";
    platform.files_.write(path, content);
    return path;
  }

  void expectNotSent(const std::string& content) {
    SCOPED_TRACE(testing::PrintToString(content.substr(0, 200)));
    forget();
    const std::string path = stored(content);
    document->sendSavedReports();
    EXPECT_THAT(steps, IsEmpty());
    EXPECT_TRUE(platform.files_.read(path) == content);
  }

  void expectSentAs(const std::string& content, const std::string& expected) {
    SCOPED_TRACE(testing::PrintToString(content.substr(0, 200)));
    forget();
    const std::string path = stored(content);
    document->sendSavedReports();
    ASSERT_THAT(steps, ElementsAre("broadcast", "report http://report.test/soap"));
    EXPECT_TRUE(platform.http_.asked.front().body == expected);
    EXPECT_TRUE(platform.broadcast_.posted.front().userInfo.at("request") == expected);
    EXPECT_FALSE(platform.files_.exists(path));
  }

  std::shared_ptr<ZtPortalData> document = makeDocument();
};

TEST_F(HostileSavedReportsTest, GrowingEntitiesAreNotSent) {
  expectNotSent(growingEntities("a") + "<a>&e9;</a>");
  expectNotSent(growingEntities("a") + "<a b='&e9;'/>");
}

TEST_F(HostileSavedReportsTest, TheNameOfAnotherFileIsSentAndNotItsContent) {
  const TemporaryFolder folder;
  const std::string secret = folder.write("secret.txt", "SECRET");
  const std::string types = folder.write("types.dtd", "<!ENTITY e 'SECRET'>");
  for (const std::string& content :
       {"<!DOCTYPE a [<!ENTITY e SYSTEM 'file://" + secret + "'>]><a>&e;</a>",
        "<!DOCTYPE a SYSTEM '" + types + "'><a>&e;</a>",
        "<a xmlns:xi='http://www.w3.org/2001/XInclude'><xi:include parse='text' href='" + secret +
            "'/></a>"}) {
    expectSentAs(content, content);
  }
}

TEST_F(HostileSavedReportsTest, ADeepReportIsSentAsItIs) {
  const std::string content = nested(100'000, "x");
  expectSentAs(content, content);
}

TEST_F(HostileSavedReportsTest, ADeepReportWithDeclarationsIsNotSent) {
  expectNotSent("<!DOCTYPE a>" + nested(100'000, "x"));
}

TEST_F(HostileSavedReportsTest, HugeNamesAreSentAsTheyAre) {
  const std::string name(1'000'000, 'n');
  const std::string content = "<" + name + " " + name + "='1'/>";
  expectSentAs(content, content);
  expectNotSent("<!DOCTYPE a>" + content);
}

TEST_F(HostileSavedReportsTest, WhatIsNotInItsEncodingIsNotSent) {
  expectNotSent("<a>\xE4</a>");
  expectNotSent("<?xml version='1.0' encoding='US-ASCII'?><a>\xC3\xA4</a>");
  expectNotSent("<?xml version='1.0' encoding='UTF-16'?><a/>");
  expectNotSent("<?xml version='1.0' encoding='x-unknown'?><a/>");
  expectNotSent("<?xml version='1.0' encoding='../../etc/passwd'?><a/>");
  expectNotSent("\xFF\xFE<\0a\0>\0\0\xD8<\0/\0a\0>\0"s);
}

TEST_F(HostileSavedReportsTest, ANulByteIsNotSent) {
  expectNotSent("<a>\0</a>"s);
  expectNotSent("<a/>\0"s);
  expectNotSent("<a/>\0<b/>"s);
  expectNotSent("\0<a/>"s);
  expectNotSent("<a>&#0;</a>");
}

TEST_F(HostileSavedReportsTest, LinesThatLookLikeARequestStayInTheBody) {
  const std::string content = "<a>\n\nPOST /other HTTP/1.1\nHost: other.test\n\n<b/></a>";
  expectSentAs(content, content);
}

}  // namespace
}  // namespace zt::test
