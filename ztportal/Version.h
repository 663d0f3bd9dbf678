// SPDX-License-Identifier: Apache-2.0
#pragma once

/// The version of these headers, for `#if` and for messages. It counts as semver.org describes: a
/// host that was built with one minor version runs with every later one of the same major version.
///
///     #if ZTPORTAL_VERSION_NUMBER < 10100
///     #error "this host needs ztportal 1.1"
///     #endif
// NOLINTBEGIN(cppcoreguidelines-macro-usage): for #if
#define ZTPORTAL_VERSION_MAJOR 1
#define ZTPORTAL_VERSION_MINOR 1
#define ZTPORTAL_VERSION_PATCH 0
#define ZTPORTAL_VERSION "1.1.0"

/// The three numbers as one: 10203 is version 1.2.3.
#define ZTPORTAL_VERSION_NUMBER \
  (ZTPORTAL_VERSION_MAJOR * 10000 + ZTPORTAL_VERSION_MINOR * 100 + ZTPORTAL_VERSION_PATCH)
// NOLINTEND(cppcoreguidelines-macro-usage)
