// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/ScopedEnvironment.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"
#include "ztportal/base/FileDescriptor.h"
#include "ztportal/base/ZtException.h"
#include "ztportal/platform/process/LinuxSubprocesses.h"

namespace {

using testing::UnorderedElementsAre;
using zt::LinuxSubprocesses;
using zt::test::inForkedProcess;
using zt::test::ScopedEnvironment;
using zt::test::TemporaryFolder;

std::string outputOf(const std::string& script) {
  return LinuxSubprocesses("").output("/bin/sh", {"-c", script});
}

/// Name and reason of what starting `program` raises; empty when it can be started.
std::string failureOf(const std::string& program, const std::vector<std::string>& arguments = {}) {
  try {
    LinuxSubprocesses("").output(program, arguments);
    return {};
  } catch (const ZtException& error) {
    return std::string(error.name().view()) + ": " + std::string(error.reason().view());
  }
}

std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> all;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) all.push_back(line);
  return all;
}

std::size_t entriesOf(const char* folder) {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder)) ++count;
  return count;
}

TEST(LinuxSubprocessesTest, ReturnsWhatTheProgramWrites) {
  EXPECT_EQ(LinuxSubprocesses("").output("/usr/bin/printf", {"%s|", "a b", "", "$HOME", "'\"\n"}),
            "a b||$HOME|'\"\n|");
  EXPECT_EQ(LinuxSubprocesses("").output("/bin/true", {}), "");
}

TEST(LinuxSubprocessesTest, TakesAnyBytesAndAnyLength) {
  EXPECT_EQ(outputOf("printf 'a\\000\\377b'"), std::string("a\0\377b", 4));
  EXPECT_EQ(LinuxSubprocesses("").output("/usr/bin/head", {"-c", "1048576", "/dev/zero"}),
            std::string(1048576, '\0'));
}

TEST(LinuxSubprocessesTest, ReturnsTheOutputHoweverTheProgramEnds) {
  EXPECT_EQ(outputOf("echo failed; exit 3"), "failed\n");
  EXPECT_EQ(outputOf("echo killed; kill -KILL $$"), "killed\n");
}

TEST(LinuxSubprocessesTest, WaitsUntilTheLastWriterClosedTheOutput) {
  EXPECT_EQ(outputOf("(sleep 0.3; echo late) & echo early"), "early\nlate\n");
}

TEST(LinuxSubprocessesTest, TheInputIsAPipeThatBringsNothing) {
  const std::string script = "[ -p /dev/stdin ] && echo pipe; read -t 0.3 text; echo $?";
  EXPECT_EQ(LinuxSubprocesses("").output("/bin/bash", {"-c", script}), "pipe\n142\n")
      << "142: the time to read was over, and the end had not come";
}

TEST(LinuxSubprocessesTest, TheInputEndsAfterTheOutputAndTheChildIsWaitedFor) {
  const TemporaryFolder folder;
  const std::string file = folder.path("ended");
  EXPECT_EQ(outputOf("echo out; exec >&-; cat; touch " + file), "out\n");
  EXPECT_TRUE(std::filesystem::exists(file));
}

TEST(LinuxSubprocessesTest, ErrorsGoNowhere) {
  EXPECT_EQ(outputOf("readlink /proc/$$/fd/2; echo error >&2"), "/dev/null\n");
}

TEST(LinuxSubprocessesTest, PassesNoFileButTheStandardStreams) {
  const zt::FileDescriptor inheritable(::open("/dev/null", O_RDONLY));
  EXPECT_EQ(outputOf("ls -v /proc/$$/fd; true"), "0\n1\n2\n");
}

TEST(LinuxSubprocessesTest, WorksForAHostWithoutStandardStreams) {
  for (unsigned closed = 0; closed < 8; ++closed) {
    const int status = inForkedProcess([&] {
      for (int number = 0; number < 3; ++number) {
        if ((closed & (1U << static_cast<unsigned>(number))) != 0) ::close(number);
      }
      const std::string told =
          outputOf("[ -p /dev/stdin ] && [ -p /dev/stdout ] && readlink /proc/$$/fd/2; ls /wrong");
      return told == "/dev/null\n" ? 0 : 1;
    });
    EXPECT_EQ(status, 0) << "closed streams, as bits: " << closed;
  }
}

TEST(LinuxSubprocessesTest, RaisesWhenTheProgramCannotBeStarted) {
  const TemporaryFolder folder;
  const std::string file = folder.write("file", "no program");
  const std::string missing = folder.path("missing");
  EXPECT_EQ(failureOf(missing),
            "CHILD_NOT_STARTED: " + missing + " cannot be started: No such file or directory");
  EXPECT_EQ(failureOf(file),
            "CHILD_NOT_STARTED: " + file + " cannot be started: Permission denied");
  EXPECT_EQ(failureOf(folder.path()),
            "CHILD_NOT_STARTED: " + folder.path() + " cannot be started: Permission denied");
  EXPECT_EQ(failureOf("sh"), "CHILD_NOT_STARTED: sh cannot be started: No such file or directory")
      << "PATH must not be searched";
  EXPECT_EQ(failureOf("/bin/true", {std::string("a\0b", 3)}),
            "CHILD_NOT_STARTED: /bin/true cannot be started: Invalid argument");
}

TEST(LinuxSubprocessesTest, RaisesWhenThereIsNoDescriptorLeft) {
  for (const rlim_t left : {0U, 1U, 2U, 3U}) {
    const int status = inForkedProcess([&] {
      // The undefined-behaviour sanitizer needs descriptors of its own for the first calls.
      if (!failureOf("/bin/true").empty() || failureOf("/nowhere").empty()) return 3;
      const int next = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
      ::close(next);
      const std::size_t before = entriesOf("/proc/self/fd");
      struct rlimit old {};
      ::getrlimit(RLIMIT_NOFILE, &old);
      const struct rlimit limit { static_cast<rlim_t>(next) + left, old.rlim_max };
      ::setrlimit(RLIMIT_NOFILE, &limit);
      const std::string failure = failureOf("/bin/true");
      ::setrlimit(RLIMIT_NOFILE, &old);
      if (failure != "CHILD_NOT_STARTED: /bin/true cannot be started: Too many open files") {
        return 1;
      }
      return entriesOf("/proc/self/fd") == before ? 0 : 2;
    });
    EXPECT_EQ(status, 0) << left << " descriptors left";
  }
}

TEST(LinuxSubprocessesTest, LeavesNothingBehind) {
  const int status = inForkedProcess([] {
    const std::size_t descriptors = entriesOf("/proc/self/fd");
    const std::size_t threads = entriesOf("/proc/self/task");
    for (int i = 0; i < 10; ++i) {
      if (outputOf("echo out") != "out\n") return 1;
      if (failureOf("/missing").empty()) return 2;
    }
    if (entriesOf("/proc/self/fd") != descriptors) return 3;
    if (entriesOf("/proc/self/task") != threads) return 4;
    return ::waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD ? 0 : 5;
  });
  EXPECT_EQ(status, 0);
}

TEST(LinuxSubprocessesTest, WorksForAHostThatIgnoresItsChildren) {
  const int status = inForkedProcess([] {
    ::signal(SIGCHLD, SIG_IGN);
    // The shell waits for a child of its own, and would not get its status with SIGCHLD ignored.
    return outputOf("(exit 7); echo $?") == "7\n" ? 0 : 1;
  });
  EXPECT_EQ(status, 0);
}

TEST(LinuxSubprocessesTest, WorksForAHostThatWaitsForEveryChildItself) {
  const int status = inForkedProcess([] {
    struct sigaction action {};
    action.sa_handler = [](int) {
      const int error = errno;
      while (::waitpid(-1, nullptr, WNOHANG) > 0) {
      }
      errno = error;
    };
    ::sigaction(SIGCHLD, &action, nullptr);
    return outputOf("echo out") == "out\n" ? 0 : 1;
  });
  EXPECT_EQ(status, 0);
}

TEST(LinuxSubprocessesTest, TheChildsSignalsAreAsAProgramExpectsThem) {
  const int status = inForkedProcess([] {
    for (const int number : {SIGPIPE, SIGCHLD, SIGHUP}) ::signal(number, SIG_IGN);
    sigset_t all;
    ::sigfillset(&all);
    ::sigprocmask(SIG_BLOCK, &all, nullptr);
    const std::string told = LinuxSubprocesses("").output(
        "/bin/sed", {"-n", "-E", "s/^Sig(Blk|Ign):\t//p", "/proc/self/status"});
    const std::vector<std::string> masks = lines(told);
    if (masks.size() != 2 || std::stoull(masks[0], nullptr, 16) != 0) return 1;
    const unsigned long long ignored = std::stoull(masks[1], nullptr, 16);
    const auto isIgnored = [&](int number) {
      return (ignored >> static_cast<unsigned>(number - 1) & 1U) != 0;
    };
    if (isIgnored(SIGPIPE) || isIgnored(SIGCHLD)) return 2;
    return isIgnored(SIGHUP) ? 0 : 3;  // started by nohup(1), say
  });
  EXPECT_EQ(status, 0);
}

TEST(LinuxSubprocessesTest, IsNotDisturbedBySignals) {
  const int status = inForkedProcess([] {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    ::sigaction(SIGALRM, &action, nullptr);  // without SA_RESTART: calls are interrupted
    const struct itimerval often {
      {0, 5000}, { 0, 5000 }
    };
    ::setitimer(ITIMER_REAL, &often, nullptr);
    return outputOf("sleep 0.2; echo one; sleep 0.2; echo two; exec >&-; sleep 0.2") == "one\ntwo\n"
               ? 0
               : 1;
  });
  EXPECT_EQ(status, 0);
}

TEST(LinuxSubprocessesTest, ThreadsDoNotDisturbOneAnother) {
  constexpr std::size_t kThreads = 8;
  std::array<std::string, kThreads> told;
  {
    std::vector<std::jthread> threads;
    for (std::size_t i = 0; i < kThreads; ++i) {
      threads.emplace_back([&told, i] {
        for (int run = 0; run < 10; ++run) told[i] += outputOf("echo " + std::to_string(i));
      });
    }
  }
  for (std::size_t i = 0; i < kThreads; ++i) {
    std::string expected;
    for (int run = 0; run < 10; ++run) expected += std::to_string(i) + "\n";
    EXPECT_EQ(told[i], expected);
  }
}

TEST(LinuxSubprocessesTest, PutsTheLibrarysProgramsAtTheEndOfThePath) {
  std::array<char, 1024> standard{};
  ASSERT_GT(::confstr(_CS_PATH, standard.data(), standard.size()), 0U);
  const std::string withoutPath = std::string(standard.data()) + ":/lib exec\n";
  const struct {
    const char* path;  // of the host; null: not set
    std::string libexec;
    std::string expected;  // as printenv(1) gives it
  } rows[] = {
      {"/usr/bin:/bin", "/lib exec", "/usr/bin:/bin:/lib exec\n"},
      {"/usr/bin:", "/lib exec", "/usr/bin::/lib exec\n"},
      {"", "/lib exec", ":/lib exec\n"},
      {nullptr, "/lib exec", withoutPath},
      {"/usr/bin", "", "/usr/bin\n"},
      {nullptr, "", ""},
      {"/usr/bin", "/a:b", "/usr/bin\n"},
      {nullptr, "/a:b", ""},
  };
  for (const auto& row : rows) {
    const ScopedEnvironment path("PATH", row.path);
    EXPECT_EQ(LinuxSubprocesses(row.libexec).output("/usr/bin/printenv", {"PATH"}), row.expected)
        << (row.path == nullptr ? "(unset)" : row.path) << ", " << row.libexec;
    EXPECT_STREQ(std::getenv("PATH"), row.path) << "the host's own must stay";
  }
}

// The whole environment of the host was passed. `BASH_ENV`, say, names a script that a shell runs
// first.
TEST(LinuxSubprocessesTest, PassesNoOtherVariablesThanPathLanguageAndHome) {
  const TemporaryFolder folder;
  const std::string script = folder.write("script", "echo unexpected\n");
  const ScopedEnvironment start("BASH_ENV", script.c_str());
  const ScopedEnvironment function("BASH_FUNC_printenv%%", "() { echo unexpected\n}");
  const ScopedEnvironment path("PATH", "/usr/bin:/bin");
  const ScopedEnvironment language("LANG", "de_DE");
  const ScopedEnvironment home("HOME", "/home/a b");
  EXPECT_THAT(lines(LinuxSubprocesses("/lib").output("/usr/bin/printenv", {})),
              UnorderedElementsAre("LANG=de_DE", "HOME=/home/a b", "PATH=/usr/bin:/bin:/lib"));
  EXPECT_EQ(LinuxSubprocesses("").output("/bin/bash", {"-c", "printenv HOME"}), "/home/a b\n");
  const ScopedEnvironment noLanguage("LANG", nullptr);
  const ScopedEnvironment noHome("HOME", nullptr);
  EXPECT_EQ(LinuxSubprocesses("/lib").output("/usr/bin/printenv", {}), "PATH=/usr/bin:/bin:/lib\n");
}

TEST(LinuxSubprocessesTest, AStartedProgramHasTheHostsEnvironment) {
  const ScopedEnvironment some("ZT_TEST_SOME", "a=b \"c\"");
  const ScopedEnvironment path("PATHS", "/bin");
  const auto program =
      LinuxSubprocesses("/lib").start("/usr/bin/printenv", {"ZT_TEST_SOME", "PATHS"});
  EXPECT_EQ(program->readToEnd(), "a=b \"c\"\n/bin\n");
}

// A subprocess that did not end blocked the host for ever.
TEST(LinuxSubprocessesTest, EndsWithAllThatItStartedAfterFiveSeconds) {
  struct Row {
    const char* script;
    const char* output;
  };
  const Row rows[] = {
      {"echo 80; sleep 1000 | cat", ""},               // does not close its output
      {"echo 80; sleep 1000 & echo more", ""},         // leaves somebody with its output behind
      {"echo 80; exec >&-; sleep 1000", "80\n"},       // does not end
      {"echo 80; exec >&-; cat; sleep 1000", "80\n"},  // the same after its input has ended
  };
  std::vector<std::jthread> threads;
  for (const Row& row : rows) {
    threads.emplace_back([&row] {
      const auto start = std::chrono::steady_clock::now();
      EXPECT_EQ(outputOf(row.script), row.output) << row.script;
      const auto took = std::chrono::steady_clock::now() - start;
      EXPECT_GE(took, std::chrono::seconds(5)) << row.script;
      EXPECT_LT(took, std::chrono::seconds(60)) << row.script;
    });
  }
}

TEST(LinuxSubprocessesTest, AnOutputWithoutEndIsNone) {
  EXPECT_EQ(LinuxSubprocesses("").output("/usr/bin/yes", {"80"}), "");
}

}  // namespace
