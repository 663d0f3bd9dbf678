// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>
#include <string>

#include "tests/support/CollectedLog.h"
#include "ztportal/base/Log.h"
#include "ztportal/system/ZtHost.h"

namespace zt::test {

namespace {

using testing::ElementsAre;

class LogTest : public testing::Test {
 protected:
  void TearDown() override { ZtHost::setLogHandler(nullptr); }
};

TEST_F(LogTest, IsOffWithoutAHandler) {
  EXPECT_FALSE(hasLogHandler());
  log(ZtLogLevel::Error, "store", "nobody hears this");
  {
    const CollectedLog logged;
    EXPECT_TRUE(hasLogHandler());
    EXPECT_THAT(logged.lines(), ElementsAre());
  }
  EXPECT_FALSE(hasLogHandler());
}

TEST_F(LogTest, PassesLevelModuleAndMessage) {
  const CollectedLog logged;
  log(ZtLogLevel::Warning, "store", "cannot write ", "/x", ": ", std::string("No space left"));
  EXPECT_THAT(logged.lines(), ElementsAre("warning store: cannot write /x: No space left"));
}

TEST_F(LogTest, AMessageIsOneLine) {
  const CollectedLog logged;
  log(ZtLogLevel::Info, "store",
      "a\nb\r\t\x7f"
      "c\xC3\xA4");
  EXPECT_THAT(logged.lines(), ElementsAre("info store: a?b???c\xC3\xA4"));
}

TEST_F(LogTest, AHandlerHearsAStateOfTheMachineOnce) {
  for (int handler = 0; handler < 2; ++handler) {
    const CollectedLog logged;
    for (const char* bus : {"one", "another", "one"}) {
      logOnce(ZtLogLevel::Info, "broadcast", "no bus: ", bus);
    }
    EXPECT_THAT(logged.lines(),
                ElementsAre("info broadcast: no bus: one", "info broadcast: no bus: another"));
  }
}

TEST_F(LogTest, AHandlerMayUseTheLibraryAndThrow) {
  int calls = 0;
  ZtHost::setLogHandler([&calls](ZtLogLevel, std::string_view, std::string_view) {
    ++calls;
    log(ZtLogLevel::Error, "store", "while the handler runs");
    ZtHost::setLogHandler(nullptr);
    throw std::runtime_error("the handler failed");
  });
  log(ZtLogLevel::Info, "store", "first");
  log(ZtLogLevel::Info, "store", "second");
  EXPECT_EQ(calls, 1);
  const CollectedLog logged;
  log(ZtLogLevel::Info, "store", "third");
  EXPECT_THAT(logged.lines(), ElementsAre("info store: third"));
}

TEST_F(LogTest, LeavesErrno) {
  ZtHost::setLogHandler([](ZtLogLevel, std::string_view, std::string_view) { errno = EIO; });
  errno = ENOENT;
  log(ZtLogLevel::Info, "store", "message");
  EXPECT_EQ(errno, ENOENT);
}

TEST_F(LogTest, TheReadyHandlerWritesALineToStandardError) {
  testing::internal::CaptureStderr();
  ZtHost::setLogHandler(ZtLogToStderr);
  log(ZtLogLevel::Debug, "transport", "one");
  log(ZtLogLevel::Error, "store", "two");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "ztportal: debug: transport: one\nztportal: error: store: two\n");
}

}  // namespace

}  // namespace zt::test
