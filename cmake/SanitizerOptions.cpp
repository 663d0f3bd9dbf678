// What programs built with sanitizers have for default options; ASAN_OPTIONS and TSAN_OPTIONS
// change them. Part of every such program, so that those have them too that tests start with an
// environment of their own.
//
// The runtimes follow thread-local variables of libraries that are loaded at run time, and take
// some of their blocks for ones with a header of an older C library (those at 16 bytes from a
// page): the leak check then reads at an address that is none, and ends the program. All such
// variables of the library are destroyed before that check.

extern "C" {

__attribute__((visibility("default"))) const char* __asan_default_options();
__attribute__((visibility("default"))) const char* __tsan_default_options();

const char* __asan_default_options() { return "intercept_tls_get_addr=0"; }
const char* __tsan_default_options() { return "intercept_tls_get_addr=0"; }
}
