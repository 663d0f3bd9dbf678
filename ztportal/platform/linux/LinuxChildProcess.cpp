#include "ztportal/platform/linux/LinuxChildProcess.h"

namespace zt {

std::string LinuxChildProcess::output(const std::string& /*program*/,
                                      const std::vector<std::string>& /*arguments*/) {
  return {};
}

}  // namespace zt
