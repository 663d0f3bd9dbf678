#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>

#include "tests/faults/FolderContent.h"
#include "tests/faults/Preload.h"
#include "tests/faults/Trial.h"
#include "tests/support/TemporaryFolder.h"

// That the interposer does to calls what it is told, and nothing else.

namespace zt::torture {
namespace {

constexpr std::chrono::seconds kPatience{60};

std::size_t number(Call call) { return static_cast<std::size_t>(call); }

class InterposerTest : public ::testing::Test {
 protected:
  /// The errors of three attempts to open the file, 0 for a success.
  std::array<int, 3> openThrice() const {
    std::array<int, 3> errors{};
    for (int& error : errors) {
      const int opened = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
      error = opened < 0 ? errno : 0;
      if (opened >= 0) ::close(opened);
    }
    return errors;
  }

  test::TemporaryFolder folder;
  std::string path = folder.write("file", "content");
};

TEST_F(InterposerTest, FailsTheNthCallOfItsKindAlone) {
  Armed armed({Call::kOpen, 2, Effect::kFail, EMFILE, false});
  const auto errors = openThrice();
  const FaultRecord record = armed.disarm();
  EXPECT_EQ(errors, (std::array{0, EMFILE, 0}));
  EXPECT_TRUE(record.struck);
  EXPECT_EQ(record.place.data(), path);
  EXPECT_EQ(record.counts[number(Call::kOpen)], 3U);
  EXPECT_EQ(record.counts[number(Call::kClose)], 2U);
  EXPECT_EQ(openThrice(), (std::array{0, 0, 0}));
}

TEST_F(InterposerTest, TellsTheWholePathOfWhatIsNamedByItsFolder) {
  const int descriptor = ::open(folder.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  Armed armed({Call::kMkdir, 1, Effect::kFail, EIO, false});
  EXPECT_EQ(::mkdirat(descriptor, "new", 0700), -1);
  const FaultRecord record = armed.disarm();
  ::close(descriptor);
  EXPECT_EQ(record.place.data(), folder.path("new"));
}

TEST_F(InterposerTest, FailsOnwards) {
  const Armed armed({Call::kOpen, 2, Effect::kFail, EIO, true});
  EXPECT_EQ(openThrice(), (std::array{0, EIO, EIO}));
}

TEST_F(InterposerTest, AFailedCloseHasClosed) {
  const int opened = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  Armed armed({Call::kClose, 1, Effect::kFail, EINTR, false});
  const int result = ::close(opened);
  const int error = errno;
  armed.disarm();
  EXPECT_EQ(result, -1);
  EXPECT_EQ(error, EINTR);
  EXPECT_EQ(::fcntl(opened, F_GETFD), -1);
}

TEST_F(InterposerTest, AShortWriteWritesHalf) {
  const int opened = ::open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
  Armed armed({Call::kWrite, 1, Effect::kShort, 0, false});
  const ssize_t written = ::write(opened, "abcdef", 6);
  armed.disarm();
  ::close(opened);
  EXPECT_EQ(written, 3);
  EXPECT_EQ(fileContent(path), "abc");
}

TEST_F(InterposerTest, KillsBeforeAndMidwayAndAfterTheCall) {
  const struct {
    Effect effect;
    std::string left;
  } rows[] = {
      {Effect::kKillBefore, ""}, {Effect::kKillMidway, "abc"}, {Effect::kKillAfter, "abcdef"}};
  for (const auto& row : rows) {
    Trial trial([&](const Teller&) {
      const int opened = ::open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
      const Armed armed({Call::kWrite, 1, row.effect, 0, false});
      [[maybe_unused]] const ssize_t written = ::write(opened, "abcdef", 6);
    });
    const TrialEnd end = trial.wait(kPatience);
    EXPECT_EQ(end.how, TrialEnd::How::kKilled);
    EXPECT_EQ(end.signal, SIGKILL);
    EXPECT_EQ(fileContent(path), row.left);
  }
}

TEST_F(InterposerTest, OtherThreadsAndUnarmedProcessesAreLeftAlone) {
  const Armed armed({Call::kOpen, 1, Effect::kFail, EIO, true});
  std::array<int, 3> errors{};
  std::thread([&] { errors = openThrice(); }).join();
  EXPECT_EQ(errors, (std::array{0, 0, 0}));
}

}  // namespace
}  // namespace zt::torture
