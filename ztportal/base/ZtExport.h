// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Marks classes and constants that the shared library exports; everything else is hidden.
#if defined(__GNUC__)
#define ZT_EXPORT __attribute__((visibility("default")))
#else
#define ZT_EXPORT
#endif

/// Hides a member of an exported class: each library or program that uses it has its own copy.
#if defined(__GNUC__)
#define ZT_LOCAL __attribute__((visibility("hidden")))
#else
#define ZT_LOCAL
#endif

#ifdef _GLIBCXX_DEBUG
/// The containers of the standard library have another layout with this macro, so a host that has
/// it needs a library that was built with it. With any other library the host does not link,
/// instead of failing at run time.
extern ZT_EXPORT const char ZtBuildTheLibraryWithGlibcxxDebugToo;
namespace zt {
[[gnu::used]] inline const char* const kDebugContainers = &ZtBuildTheLibraryWithGlibcxxDebugToo;
}
#endif
