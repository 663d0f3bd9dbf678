// SPDX-License-Identifier: Apache-2.0
#include "ztportal/base/ZtException.h"

#include <string>
#include <utility>

ZtException::ZtException(ZtString name, ZtString reason)
    : std::runtime_error(std::string(reason.printed())),
      _name(std::move(name)),
      _reason(std::move(reason)) {}

ZtException::~ZtException() = default;
