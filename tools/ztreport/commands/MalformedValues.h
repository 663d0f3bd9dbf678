// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace zt::tools {

/// The first name or value that keeps the text of a report from being well-formed XML, such as "the
/// value of EDITION in the pool CUSTOM (and 2 more)"; empty if there is none. The end tags of
/// generic arrays, which no parser accepts either, do not count.
std::string malformedValues(const std::string& report);

}  // namespace zt::tools
