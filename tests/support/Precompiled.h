// SPDX-License-Identifier: Apache-2.0
// The headers that nearly every test includes, compiled once for each test program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
