// SPDX-License-Identifier: Apache-2.0
#include "tools/ztreport/commands/InputOutput.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>

#include "tools/common/Terminal.h"
#include "ztportal/base/RegularFile.h"

namespace zt::tools {

std::string nameOf(const std::string& file) { return file == "-" ? "standard input" : file; }

std::string readAll(const std::string& file) {
  const auto fail = [&file](int error) {
    throw Failure(Exit::MachineFailed, nameOf(file) + ": " + std::strerror(error));
  };
  using OpenFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;
  const OpenFile opened(file == "-" ? nullptr : std::fopen(file.c_str(), "rbe"), &std::fclose);
  std::FILE* const stream = file == "-" ? stdin : opened.get();
  if (stream == nullptr) fail(errno);
  std::string content;
  std::array<char, std::size_t{16} * 1024> part;
  while (const std::size_t count = std::fread(part.data(), 1, part.size(), stream)) {
    content.append(part.data(), count);
    if (content.size() > kReportFileLimit) fail(EFBIG);
  }
  if (std::ferror(stream) != 0) fail(errno);
  return content;
}

void print(const std::string& text) {
  std::cout << text << std::flush;
  if (!std::cout) throw Failure(Exit::MachineFailed, "standard output cannot be written");
}

void tell(Output output, const std::string& words, const Json& object) {
  constexpr int kIndent = 2;
  if (output == Output::Words) print(words + "\n");
  if (output == Output::Json || output == Output::Receipts) print(object.text(kIndent) + "\n");
}

void complain(const std::string& message) {
  std::cerr << "ztreport: " << terminal::terminalText(message) << '\n';
}

}  // namespace zt::tools
