// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/support/TemporaryFolder.h"
#include "ztportal/platform/files/LinuxFiles.h"

namespace zt::test {

class LinuxFilesFixture : public testing::Test {
 protected:
  std::optional<std::string> read(const std::string& path) {
    return _files.read(path, kReportFileLimit);
  }

  LinuxFiles _files;
  TemporaryFolder _folder;
};

}  // namespace zt::test
