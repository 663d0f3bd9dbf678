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
#include "ztportal/platform/process/ProgramPath.h"

namespace {

using zt::test::ChildProcess;
using zt::test::ScopedEnvironment;
using zt::test::TemporaryFolder;

constexpr const char* kTellPath = "ZT_TEST_TELL_EXECUTABLE_PATH";

/// A copy of this program that is started with the variable set says where it is and does nothing
/// else; with "deleted" it deletes its own file before.
const bool kIsTelling = [] {
  const char* how = std::getenv(kTellPath);
  if (how == nullptr) return false;
  if (std::string(how) == "deleted") std::filesystem::remove(zt::executablePath());
  std::puts(zt::executablePath().c_str());
  std::exit(0);
}();

/// What a copy of this program at `path` says.
std::optional<std::string> toldBy(const std::string& path, const char* how) {
  std::filesystem::create_directories(std::filesystem::path(path).parent_path());
  std::filesystem::copy_file("/proc/self/exe", path);
  const ScopedEnvironment environment(kTellPath, how);
  ChildProcess copy({path});
  std::optional<std::string> told = copy.readLine(std::chrono::seconds(60));
  EXPECT_EQ(copy.wait(), 0);
  return told;
}

class ExecutableTest : public testing::Test {
 protected:
  ExecutableTest() : _root(std::filesystem::canonical(_folder.path()).string()) {}

  TemporaryFolder _folder;
  std::string _root;
};

TEST_F(ExecutableTest, IsThisProgram) {
  const std::string path = zt::executablePath();
  EXPECT_TRUE(path.starts_with('/')) << path;
  EXPECT_TRUE(std::filesystem::equivalent(path, "/proc/self/exe")) << path;
}

TEST_F(ExecutableTest, MayBeLong) {
  std::string path = _root;
  for (int i = 0; i < 15; ++i) path += "/" + std::string(200, static_cast<char>('a' + i));
  EXPECT_EQ(toldBy(path + "/program", ""), path + "/program");
}

TEST_F(ExecutableTest, MayHaveAnyName) {
  const std::string path = _root + "/\xc3\xa4 \xff (1)/program (x)";
  EXPECT_EQ(toldBy(path, ""), path);
}

TEST_F(ExecutableTest, KeepsItsPathWhenItIsDeleted) {
  EXPECT_EQ(toldBy(_root + "/program", "deleted"), _root + "/program");
  EXPECT_FALSE(std::filesystem::exists(_root + "/program"));
}

TEST_F(ExecutableTest, MayBeNamedLikeADeletedFile) {
  const std::string path = _root + "/program (deleted)";
  EXPECT_EQ(toldBy(path, ""), path);
  std::filesystem::remove(path);
  EXPECT_EQ(toldBy(path, "deleted"), path);
}

}  // namespace
