// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace zt {

/// The keys that pools and records have in a description, with their types and their names in
/// reports, and the names of the enumerations, as JSON; `zt_schema` in ztportal/c/ztportal.h has an
/// example.
std::string descriptionSchema();

}  // namespace zt
