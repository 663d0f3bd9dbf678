/// The thread sanitizer reads this at start; only builds with it have this file. The packaged HTTP
/// library is not instrumented, so the sanitizer does not see the guards of its function-local
/// tables and reports their first two uses as a race.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions();

const char* __tsan_default_suppressions() { return "called_from_lib:libcpp-httplib.so\n"; }
