// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "ztportal/base/Text.h"
#include "ztportal/c/ztportal.h"
#include "ztportal/portal/KeyedValue.h"
#include "ztportal/portal/ZtPortalData.h"
#include "ztportal/report/ZtReport.h"

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
template <class Body, class... Arguments>
zt_status call(Body body, Arguments... arguments) noexcept {
  try {
    body(arguments...);
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

inline std::string requiredText(const char* text, std::string_view name) {
  return &required(text, name);
}

/// `ZT_NO_LIMIT` and long durations become a hundred years, which every clock can add to now.
template <class Duration = std::chrono::milliseconds>
Duration durationOf(std::int64_t number, std::string_view name) {
  constexpr Duration kLongest = std::chrono::years(100);
  if (number == ZT_NO_LIMIT) return kLongest;
  if (number < 0) fail(ZT_BAD_ARGUMENT, name, " is negative");
  return std::min(Duration(number), kLongest);
}

/// A copy of the structure that the host passes, whatever version of the library it was built for.
/// Members that it does not know are zero; those that this library does not know must be. The size
/// of a structure is a multiple of its alignment; any other would end within a member, half a
/// pointer.
template <class Structure>
Structure readStructure(const Structure* given, std::string_view name) {
  constexpr std::size_t kLargest = 4096;
  const std::size_t size = required(given, name).size;
  if (size < sizeof(size) || size > kLargest || size % alignof(Structure) != 0) {
    fail(ZT_BAD_ARGUMENT, name, ": size is not set");
  }
  Structure known{};
  std::memcpy(&known, given, std::min(size, sizeof(known)));
  const auto* const bytes = reinterpret_cast<const char*>(given);
  if (std::any_of(bytes + std::min(size, sizeof(known)), bytes + size, std::identity())) {
    fail(ZT_BAD_ARGUMENT, name, ": a newer library is needed");
  }
  return known;
}

/// None for NULL. Throws `Failure` for options with a problem.
std::optional<ZtTransportOptions> transportOptionsOf(const zt_transport_options* given);

// Results.

/// Its texts belong to `delivery`.
zt_delivery deliveryOf(const ZtDelivery& delivery);
/// Throws `Failure` unless the report is in the store.
void expectSaved(const ZtDelivery& delivery);
/// A text that is returned: its owner keeps it in `kept`. Null if it is missing.
const char* keep(std::string& kept, const ZtString& text);

}  // namespace zt::c

struct zt_pool {
  zt_report* report = nullptr;         ///< null for a handle that the host does not have
  zt::KeyedObject keyed = {};          ///< of a pool or record
  ZtPortalPoolArray* array = nullptr;  ///< the generic fields that the handle stands for instead
  ZtPortalPool* pool = nullptr;        ///< of a pool
  zt_pool* fields = nullptr;           ///< of a pool, once they were asked for
  std::string text = {};               ///< the last one that was returned
};

struct zt_report {
  std::shared_ptr<ZtPortalData> document;
  std::shared_ptr<ZtReport> run = nullptr;  ///< of zt_run_create
  zt_pool* execution = nullptr;             ///< of the run, once it is started
  std::deque<zt_pool> pools = {};           ///< the handles that the host has
  std::string text = {};                    ///< the last one that was returned
  ZtDelivery receipt = {};
  zt_delivery delivery = {};
};
