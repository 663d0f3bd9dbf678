// SPDX-License-Identifier: Apache-2.0
#pragma once

/// A boolean byte: 0 false, 1 true. Any other byte is stored as given, and written as false.
using ZtBOOL = signed char;
