// SPDX-License-Identifier: Apache-2.0
/// Read by the thread sanitizer at start; only builds with that sanitizer have this file. Debian's
/// HTTP library is not instrumented, so the sanitizer does not see how its function-local tables
/// are initialised and reports their first two uses as a race.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions();

const char* __tsan_default_suppressions() { return "called_from_lib:libcpp-httplib.so\n"; }
