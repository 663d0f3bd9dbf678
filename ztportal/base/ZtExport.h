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
