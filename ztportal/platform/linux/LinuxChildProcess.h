#pragma once

#include "ztportal/platform/ChildProcess.h"

namespace zt {

class LinuxChildProcess final : public ChildProcess {
 public:
  std::string output(const std::string& program,
                     const std::vector<std::string>& arguments) override;
};

}  // namespace zt
