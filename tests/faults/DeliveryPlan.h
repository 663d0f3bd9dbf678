#pragma once

#include <string>
#include <string_view>

#include "tests/faults/FaultyRelay.h"
#include "tests/faults/Random.h"

namespace zt::torture {

/// What a report of the delivery campaign meets on its way.
struct DeliveryPlan {
  std::string_view name;
  std::string answer = "accept";  ///< of ztinbox: a word of its `--answer`
  unsigned slow = 0;              ///< of ztinbox: milliseconds before its answer
  RelayPlan relay{};
  bool unreachable = false;  ///< nobody listens where the server should be
  bool losesAnswer = false;  ///< the server may have accepted what the library must keep
  bool killsServer = false;

  /// The plan in one line, for who wants to repeat it.
  std::string text() const;
};

/// One of all the faults there are; those that take a time-out come rarely.
DeliveryPlan anyDeliveryPlan(Random& random);

}  // namespace zt::torture
