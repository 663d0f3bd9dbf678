// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "ztportal/base/ZtString.h"

namespace zt {

/// The name of the vendor, and of the folder of all its applications.
inline constexpr char kVendorName[] = "Kelvane";

/// Path of `relativePath` below the application-support folder of `domain`. A folder is created
/// there unless something exists at that path already. Nullopt if there is no such domain or a
/// folder cannot be created.
std::optional<std::string> supportFolder(std::int16_t domain, std::string_view relativePath);

/// The host's own folder, `Kelvane/<name of the host>` in the user's application-support folder;
/// created like every support folder. Nullopt for a host without a name.
std::optional<std::string> hostFolder();

/// Path of the host's folder, whether it exists or not.
std::optional<std::string> hostFolderPath();

}  // namespace zt
