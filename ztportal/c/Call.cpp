// SPDX-License-Identifier: Apache-2.0
#include "ztportal/c/Call.h"

#include <algorithm>
#include <array>
#include <exception>
#include <limits>
#include <new>

#include "ztportal/base/Utf8.h"
#include "ztportal/base/ZtException.h"

namespace zt::c {

namespace {

/// Not a string, since a thread may call the library while its objects are being destroyed.
constinit thread_local std::array<char, 2048> lastError{};

zt_status keepError(zt_status status, std::string_view sentence) noexcept {
  sentence = sentence.substr(0, lastError.size() - 1);
  sentence = sentence.substr(0, sentence.find('\0'));
  *std::copy_n(sentence.begin(), utf8Length(sentence), lastError.begin()) = '\0';
  return status;
}

constexpr std::array<const char*, 10> kStatusNames{
    "ZT_OK",           "ZT_NOT_ACCEPTED", "ZT_BAD_ARGUMENT", "ZT_UNKNOWN_KEY", "ZT_WRONG_TYPE",
    "ZT_OUT_OF_RANGE", "ZT_BAD_JSON",     "ZT_NO_MEMORY",    "ZT_SYSTEM",      "ZT_FAILED"};
static_assert(ZT_FAILED + 1 == kStatusNames.size());

}  // namespace

zt_status statusOfException() noexcept try { throw; } catch (const Failure& failure) {
  return keepError(failure.status, failure.sentence);
} catch (const std::bad_alloc&) {
  return keepError(ZT_NO_MEMORY, "not enough memory");
} catch (const std::exception& error) {
  return keepError(ZT_FAILED, error.what());
} catch (...) {
  return keepError(ZT_FAILED, "a function of the host has thrown an exception");
}

ZtString textOf(const char* text, std::size_t length) {
  if (text != nullptr) return std::string_view(text, length);
  if (length != 0) fail(ZT_BAD_ARGUMENT, "the text is NULL, but has a length");
  return nullptr;
}

ZtDate dateOf(std::int64_t milliseconds) {
  return milliseconds == ZT_NOW ? ZtDate::now() : ZtDate::fromMilliseconds(milliseconds);
}

std::chrono::milliseconds durationOf(std::int64_t milliseconds, std::string_view name) {
  constexpr std::chrono::milliseconds kLongest = std::chrono::years(100);
  if (milliseconds == ZT_NO_LIMIT) return kLongest;
  if (milliseconds < 0) fail(ZT_BAD_ARGUMENT, name, " is negative");
  return std::min(std::chrono::milliseconds(milliseconds), kLongest);
}

std::chrono::seconds secondsOf(std::int64_t seconds, std::string_view name) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max() / 1000;
  return std::chrono::duration_cast<std::chrono::seconds>(
      durationOf(seconds < 0 ? seconds : std::min(seconds, kMost) * 1000, name));
}

void readDuration(std::chrono::milliseconds& member, std::int64_t given, std::string_view name) {
  if (given != 0) member = durationOf(given, name);
}

unsigned attemptsOf(std::int32_t attempts, unsigned byDefault) {
  if (attempts == ZT_NO_LIMIT) return 0;
  if (attempts < 0) fail(ZT_BAD_ARGUMENT, "attempts is negative");
  return attempts == 0 ? byDefault : static_cast<unsigned>(attempts);
}

}  // namespace zt::c

const char* zt_status_name(zt_status status) {
  const auto& names = zt::c::kStatusNames;
  const bool isKnown = status >= 0 && static_cast<std::size_t>(status) < names.size();
  return isKnown ? names[static_cast<std::size_t>(status)] : "unknown status";
}

const char* zt_last_error() { return zt::c::lastError.data(); }

const char* zt_version() { return ZT_VERSION; }
