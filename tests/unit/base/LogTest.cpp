#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>
#include <string>
#include <vector>

#include "ztportal/base/Log.h"
#include "ztportal/system/ZtHost.h"

namespace zt::test {

namespace {

class LogTest : public testing::Test {
 protected:
  void TearDown() override { ZtHost::setLogHandler(nullptr); }

  /// Collects what is logged from now on, one line for each message.
  void collect() {
    ZtHost::setLogHandler([this](ZtLogLevel level, std::string_view module, std::string_view text) {
      std::string line = std::to_string(static_cast<int>(level)) + " ";
      appendText(line, module, " ", text);
      lines_.push_back(line);
    });
  }

  std::vector<std::string> lines_;
};

TEST_F(LogTest, IsOffUntilThereIsAHandler) {
  EXPECT_FALSE(hasLogHandler());
  log(ZtLogLevel::Error, "store", "nobody hears this");
  collect();
  EXPECT_TRUE(hasLogHandler());
  ZtHost::setLogHandler(nullptr);
  EXPECT_FALSE(hasLogHandler());
  EXPECT_EQ(lines_, std::vector<std::string>());
}

TEST_F(LogTest, PassesLevelModuleAndMessage) {
  collect();
  log(ZtLogLevel::Warning, "store", "cannot write ", "/x", ": ", std::string("No space left"));
  EXPECT_THAT(lines_, testing::ElementsAre("2 store cannot write /x: No space left"));
}

TEST_F(LogTest, AMessageIsOneLine) {
  collect();
  log(ZtLogLevel::Info, "store",
      "a\nb\r\t\x7f"
      "c\xC3\xA4");
  EXPECT_THAT(lines_, testing::ElementsAre("1 store a?b???c\xC3\xA4"));
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
  collect();
  log(ZtLogLevel::Info, "store", "third");
  EXPECT_THAT(lines_, testing::ElementsAre("1 store third"));
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
