#pragma once

#include "ztportal/base/ZtString.h"

namespace zt {

/// What the library knows of a customer.
struct Customer {
  ZtString id;
  ZtString url;  // of the configuration document
  ZtString defaultApplicationId;
};

/// The customer with exactly this ID; null for every other text and for a missing one.
const Customer* customerWithId(const ZtString& id);

}  // namespace zt
