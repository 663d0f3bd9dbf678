/// Read by the thread sanitizer at start; part of the program only in such builds. The packaged
/// HTTP library is not instrumented: the sanitizer does not see how its function-local tables are
/// guarded, and takes their first use for a race with the second.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions();

const char* __tsan_default_suppressions() { return "called_from_lib:libcpp-httplib.so\n"; }
