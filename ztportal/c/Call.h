// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "ztportal/base/Text.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/c/ztportal.h"
#include "ztportal/platform/http/ZtTransportOptions.h"
#include "ztportal/portal/ZtDelivery.h"
#include "ztportal/portal/ZtPortalData.h"
#include "ztportal/portal/ZtReportStore.h"

// What the functions of ztportal.h have in common: how they fail, how they read arguments, and the
// handles that several files use.

namespace zt::c {

// Failures.

/// Ends a call with a status and a sentence for `zt_last_error`.
struct Failure {
  zt_status status;
  std::string sentence;
};

template <class... Parts>
[[noreturn]] void fail(zt_status status, const Parts&... parts) {
  std::string sentence;
  appendText(sentence, parts...);
  throw Failure{status, std::move(sentence)};
}

/// Turns the exception that is being handled into a status and `zt_last_error`.
zt_status statusOfException() noexcept;

/// Runs the body of a function of the interface. No exception leaves it.
template <class Body>
zt_status call(Body body) noexcept {
  try {
    body();
    return ZT_OK;
  } catch (...) {
    return statusOfException();
  }
}

// Arguments.

template <class Object>
Object& required(Object* pointer, std::string_view name) {
  if (pointer == nullptr) fail(ZT_BAD_ARGUMENT, name, " is NULL");
  return *pointer;
}

inline std::string_view requiredText(const char* text, std::string_view name) {
  return &required(text, name);
}

/// A text with a length; missing for NULL.
ZtString textOf(const char* text, std::size_t length);

/// The date of a number of milliseconds, `ZT_NOW` or `ZT_NO_DATE`.
ZtDate dateOf(std::int64_t milliseconds);

/// `ZT_NO_LIMIT` and long durations become a hundred years, which every clock can add to now.
std::chrono::milliseconds durationOf(std::int64_t milliseconds, std::string_view name);
std::chrono::seconds secondsOf(std::int64_t seconds, std::string_view name);
/// Zero leaves the default in `member`.
void readDuration(std::chrono::milliseconds& member, std::int64_t given, std::string_view name);

/// A copy of the structure that the host passes, whatever version of the library it was built for.
/// Members that it does not know are zero; those that this library does not know must be. The size of
/// a structure is a multiple of its alignment; any other would end within a member, half a pointer.
template <class Structure>
Structure readStructure(const Structure* given, std::string_view name) {
  constexpr std::size_t kLargest = 4096;
  const std::size_t size = required(given, name).size;
  if (size < sizeof(size) || size > kLargest || size % alignof(Structure) != 0) {
    fail(ZT_BAD_ARGUMENT, name, ": size is not set");
  }
  Structure known{};
  std::memcpy(&known, given, size < sizeof(known) ? size : sizeof(known));
  const auto* const bytes = reinterpret_cast<const char*>(given);
  for (std::size_t i = sizeof(known); i < size; ++i) {
    if (bytes[i] != 0) fail(ZT_BAD_ARGUMENT, name, ": a newer library is needed");
  }
  return known;
}

/// Throws `Failure` for options with a problem.
ZtTransportOptions transportOptionsOf(const zt_transport_options& given);
/// None for NULL.
std::optional<ZtTransportOptions> transportOptionsOf(const zt_transport_options* given);
/// How often a report may fail: `ZT_NO_LIMIT` is 0, and 0 is the default.
unsigned attemptsOf(std::int32_t attempts, unsigned byDefault);

// Results. The texts of these structures belong to their argument.

zt_delivery deliveryOf(const ZtDelivery& delivery);

struct SavedReport : zt_saved_report {
  explicit SavedReport(const ZtSavedReport& saved);
  SavedReport(const SavedReport&) = delete;
  SavedReport& operator=(const SavedReport&) = delete;
  ~SavedReport() = default;

 private:
  std::string _id;
};

/// Throws `Failure` unless the report was accepted.
void expectAccepted(bool isAccepted, const ZtDelivery& delivery);
/// Throws `Failure` unless the report is in the store.
void expectSaved(const ZtDelivery& delivery);

struct Table;

}  // namespace zt::c

/// A pool, or a record in one of its lists.
struct zt_pool {
  zt_report* report = nullptr;
  const zt::c::Table* table = nullptr;
  void* object = nullptr;        ///< of the class of the table
  ZtPortalPool* pool = nullptr;  ///< the same; null for a record
  std::string text = {};         ///< the last one that was returned
};

struct zt_report {
  std::shared_ptr<ZtPortalData> document;
  std::deque<zt_pool> pools = {};  ///< the handles that the host has
  std::string text = {};           ///< the last one that was returned
  ZtDelivery receipt = {};
  zt_delivery delivery = {};
};
