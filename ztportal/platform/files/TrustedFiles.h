// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <string>

namespace zt {

/// Whether what is in the file or folder `path` may decide what this process does: it belongs to
/// root, the effective user of this process or `owner`, and nobody else may write it. The group may
/// if it is the private group of the file's owner, as many systems make one for each user. Links
/// are followed. The folders above are not checked.
///
///     isTrusted("/tmp", ::geteuid());                   // false
///     isTrusted("/usr/libexec/ztportal-1", ::geteuid());  // true
bool isTrusted(const std::string& path, uid_t owner);

/// The owner of the file `path`; the effective user of this process if it cannot be read.
uid_t ownerOf(const std::string& path);

}  // namespace zt
