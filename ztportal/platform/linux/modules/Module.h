#pragma once

#include <atomic>

// The shared library needs nothing but the C and C++ libraries to start. The files of platform/
// that call a foreign library stand in modules, shared objects of the library's own in the folder
// beside it that is named after its version; a module is loaded at the first question that it
// answers, and stays. The static library has those files in it and no modules.
//
// A module's name is that of the foreign library. For `icu` there are
//
// - `IcuModule.h`, the table of what the module answers, which both sides include,
// - `IcuModule.cpp`, the one file that the module adds to those of the static library, and
// - `IcuAnswers.cpp`, which stands in the shared library for the files that are in the module: it
//   defines the same things by asking the module.
//
// Where a module is missing (an installation that is not whole) or cannot be loaded (the process
// has no descriptor or no memory left), its questions are answered as on a machine that knows
// nothing: no answer of a server, no document, no name. Nothing is thrown, and the next question
// tries again.

namespace zt {

/// The table that the module `name` exports as `ztportalModuleTable`; null when it cannot be
/// loaded.
const void* loadModule(const char* name) noexcept;

/// The table of a module, which is loaded by then; null when it cannot be. For any thread.
template <class Table>
const Table* module() noexcept {
  static constinit std::atomic<const Table*> loaded{nullptr};
  const Table* table = loaded.load(std::memory_order_acquire);
  if (table == nullptr) {
    table = static_cast<const Table*>(loadModule(Table::kName));
    loaded.store(table, std::memory_order_release);
  }
  return table;
}

}  // namespace zt
