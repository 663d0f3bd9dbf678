#pragma once

#include "tests/faults/interposer/FaultPlan.h"

namespace zt::torture {

/// Starts this program anew with the interposer preloaded, unless it is already; the programs that
/// it starts get none.
void ensureInterposer(char** words);

/// Lets the calls of this thread meet a plan for a scope.
class Armed {
 public:
  explicit Armed(const FaultPlan& plan);
  Armed(const Armed&) = delete;
  Armed& operator=(const Armed&) = delete;
  ~Armed();

  /// Ends it before the end of the scope.
  FaultRecord disarm();

 private:
  bool _isArmed = true;
};

}  // namespace zt::torture
