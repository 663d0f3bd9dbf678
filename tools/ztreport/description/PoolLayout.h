#pragma once

#include <span>
#include <string_view>

#include "tools/ztreport/description/Keys.h"

namespace zt::tools {

/// A stretch of the fields that a typed pool writes ahead of its generic ones.
struct PoolPiece {
  enum class Kind {
    Values,   ///< fields with a value, those of `lines` that have a field
    Records,  ///< an array of records of `lines`; absent where there is no record
    False     ///< a boolean field that is always false, and no key
  };

  Kind kind;
  std::string_view name;   ///< the key of the records
  std::string_view field;  ///< the name of the array or the boolean field
  std::span<const KeyLine> lines;
};

/// How a kind of pool stands in a report.
struct PoolLayout {
  std::string_view kind;  ///< in a description
  std::string_view type;  ///< in a report
  std::span<const PoolPiece> pieces;
};

/// The layout of the typed pools of this type; null for a type that only generic pools have.
const PoolLayout* layoutOfType(std::string_view type);

}  // namespace zt::tools
