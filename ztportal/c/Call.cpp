// SPDX-License-Identifier: Apache-2.0
#include "ztportal/c/Call.h"

#include <array>
#include <exception>
#include <new>

#include "ztportal/base/Utf8.h"
#include "ztportal/portal/description/DescriptionSchema.h"

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

const char* keep(std::string& kept, const ZtString& text) {
  kept = text.view();
  return text.isNull() ? nullptr : kept.c_str();
}

}  // namespace zt::c

const char* zt_last_error() { return zt::c::lastError.data(); }

const char* zt_version() { return ZT_VERSION; }

const char* zt_schema() try {
  // Never destroyed, since hosts also report from static destructors.
  static const auto& text = *new std::string(zt::descriptionSchema());
  return text.c_str();
} catch (...) {
  return nullptr;
}
