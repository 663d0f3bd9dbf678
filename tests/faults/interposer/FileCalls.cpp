#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>

#include "tests/faults/interposer/Fate.h"

// The calls on files and folders, in all the forms in which the library and what it links call
// them. What the C library calls within itself cannot be met from outside.

using zt::torture::Call;
using zt::torture::Effect;
using zt::torture::fateOf;
using zt::torture::killThisProcess;
using zt::torture::meet;
using zt::torture::meetTransfer;
using zt::torture::original;
using zt::torture::Place;

namespace {

using Folder = DIR*;
using Entry = dirent*;
using Entry64 = dirent64*;
using Stream = FILE*;

/// A failed close has closed all the same: the system gives the number away again.
template <class CloseFirst>
int meetClose(const Place& place, CloseFirst closeFirst) {
  const Effect effect = fateOf(Call::kClose, place);
  const int error = errno;
  const int result = closeFirst();
  if (effect == Effect::kKillAfter || effect == Effect::kKillMidway) killThisProcess();
  if (effect != Effect::kFail) return result;
  errno = error;
  return -1;
}

mode_t modeOf(int flags, va_list arguments) {
  const bool hasMode = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
  return hasMode ? va_arg(arguments, mode_t) : 0;
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeOf(flags, arguments);
  va_end(arguments);
  return meet<"open">(Call::kOpen, {path}, -1, path, flags, mode);
}

int open64(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeOf(flags, arguments);
  va_end(arguments);
  return meet<"open64">(Call::kOpen, {path}, -1, path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeOf(flags, arguments);
  va_end(arguments);
  return meet<"openat">(Call::kOpen, {path, folder}, -1, folder, path, flags, mode);
}

int openat64(int folder, const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeOf(flags, arguments);
  va_end(arguments);
  return meet<"openat64">(Call::kOpen, {path, folder}, -1, folder, path, flags, mode);
}

int __open64_2(const char* path, int flags) {
  return meet<"__open64_2">(Call::kOpen, {path}, -1, path, flags);
}

int __openat64_2(int folder, const char* path, int flags) {
  return meet<"__openat64_2">(Call::kOpen, {path, folder}, -1, folder, path, flags);
}

FILE* fopen(const char* path, const char* mode) {
  return meet<"fopen">(Call::kOpen, {path}, Stream{}, path, mode);
}

FILE* fopen64(const char* path, const char* mode) {
  return meet<"fopen64">(Call::kOpen, {path}, Stream{}, path, mode);
}

DIR* opendir(const char* path) { return meet<"opendir">(Call::kOpen, {path}, Folder{}, path); }

DIR* fdopendir(int descriptor) {
  return meet<"fdopendir">(Call::kOpen, {nullptr, descriptor}, Folder{}, descriptor);
}

ssize_t read(int descriptor, void* bytes, size_t size) {
  return meetTransfer(Call::kRead, descriptor, size, [&](size_t count) {
    return original<"read", ssize_t>(descriptor, bytes, count);
  });
}

ssize_t readv(int descriptor, const iovec* parts, int count) {
  return meet<"readv">(Call::kRead, {nullptr, descriptor}, ssize_t{-1}, descriptor, parts, count);
}

ssize_t write(int descriptor, const void* bytes, size_t size) {
  return meetTransfer(Call::kWrite, descriptor, size, [&](size_t count) {
    return original<"write", ssize_t>(descriptor, bytes, count);
  });
}

ssize_t writev(int descriptor, const iovec* parts, int count) {
  return meet<"writev">(Call::kWrite, {nullptr, descriptor}, ssize_t{-1}, descriptor, parts, count);
}

int close(int descriptor) {
  return meetClose({nullptr, descriptor}, [&] { return original<"close", int>(descriptor); });
}

int fclose(FILE* stream) {
  return meetClose({nullptr, ::fileno(stream)}, [&] { return original<"fclose", int>(stream); });
}

int mkdir(const char* path, mode_t mode) noexcept {
  return meet<"mkdir">(Call::kMkdir, {path}, -1, path, mode);
}

int mkdirat(int folder, const char* path, mode_t mode) noexcept {
  return meet<"mkdirat">(Call::kMkdir, {path, folder}, -1, folder, path, mode);
}

int rename(const char* from, const char* to) noexcept {
  return meet<"rename">(Call::kRename, {from}, -1, from, to);
}

int unlink(const char* path) noexcept { return meet<"unlink">(Call::kUnlink, {path}, -1, path); }

int unlinkat(int folder, const char* path, int flags) noexcept {
  return meet<"unlinkat">(Call::kUnlink, {path, folder}, -1, folder, path, flags);
}

int remove(const char* path) noexcept { return meet<"remove">(Call::kUnlink, {path}, -1, path); }

dirent* readdir(DIR* folder) {
  return meet<"readdir">(Call::kReaddir, {nullptr, ::dirfd(folder)}, Entry{}, folder);
}

dirent64* readdir64(DIR* folder) {
  return meet<"readdir64">(Call::kReaddir, {nullptr, ::dirfd(folder)}, Entry64{}, folder);
}

}  // extern "C"
