#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <string>

#include "tools/ztinbox/LineOutput.h"
#include "tools/ztinbox/http/Fd.h"

namespace {

using zt::inbox::Fd;
using zt::inbox::LineOutput;

class Pipe {
 public:
  Pipe() {
    std::array<int, 2> ends{};
    EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK), 0);
    _readEnd = Fd(ends[0]);
    _writeEnd = Fd(ends[1]);
  }

  int writeEnd() const { return _writeEnd.number(); }
  std::string readAll() const {
    std::string text;
    std::array<char, 4096> part{};
    for (;;) {
      const ssize_t count = ::read(_readEnd.number(), part.data(), part.size());
      if (count <= 0) return text;
      text.append(part.data(), static_cast<std::size_t>(count));
    }
  }

 private:
  Fd _readEnd;
  Fd _writeEnd;
};

TEST(LineOutputTest, WritesALineAtOnce) {
  const Pipe pipe;
  LineOutput output(pipe.writeEnd());
  output.write("one");
  EXPECT_EQ(pipe.readAll(), "one\n");
  output.write("two");
  EXPECT_EQ(pipe.readAll(), "two\n");
}

TEST(LineOutputTest, WritesManyLinesTogether) {
  const Pipe pipe;
  LineOutput output(pipe.writeEnd());
  std::string lines;
  for (int i = 1'000; i < 3'000; ++i) lines += "line " + std::to_string(i) + "\n";
  output.write(std::string_view(lines).substr(0, lines.size() - 1));
  EXPECT_EQ(pipe.readAll(), lines);
  const std::string longOne(5'000, 'x');
  output.write(longOne + "\nshort");
  EXPECT_EQ(pipe.readAll(), longOne + "\nshort\n");
}

TEST(LineOutputTest, LeavesLinesOutWhenNobodyReadsAndSaysHowMany) {
  const Pipe pipe;
  LineOutput output(pipe.writeEnd());
  const std::string filling(4096, 'x');
  while (::write(pipe.writeEnd(), filling.data(), filling.size()) > 0) {
  }
  output.write("lost");
  output.write("lost too\nand lost");
  EXPECT_EQ(pipe.readAll().find("lost"), std::string::npos);
  output.write("back");
  EXPECT_EQ(pipe.readAll(), "(3 lines left out)\nback\n");
  output.write("again");
  EXPECT_EQ(pipe.readAll(), "again\n");
}

}  // namespace
