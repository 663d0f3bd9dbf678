// SPDX-License-Identifier: Apache-2.0
// Default options of programs that are built with sanitizers; ASAN_OPTIONS and TSAN_OPTIONS
// override them. They are compiled in, so that they also apply to programs that tests start with a
// different environment.
//
// The runtimes track the thread-local storage of libraries that are loaded at run time. They treat
// a block 16 bytes after the start of a page as one with the header of an older C library; the leak
// check then reads from an invalid address and ends the program. The library destroys all of its
// thread-local variables before that check, so nothing is lost by not tracking them.

extern "C" {

__attribute__((visibility("default"))) const char* __asan_default_options();
__attribute__((visibility("default"))) const char* __tsan_default_options();

const char* __asan_default_options() { return "intercept_tls_get_addr=0"; }
const char* __tsan_default_options() { return "intercept_tls_get_addr=0"; }
}
