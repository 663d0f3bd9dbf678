#pragma once

/// Marks what the shared library exports; everything else in it is hidden.
#if defined(__GNUC__)
#define ZT_EXPORT __attribute__((visibility("default")))
#else
#define ZT_EXPORT
#endif

/// Keeps a part of an exported class within each library or program that uses it.
#if defined(__GNUC__)
#define ZT_LOCAL __attribute__((visibility("hidden")))
#else
#define ZT_LOCAL
#endif
