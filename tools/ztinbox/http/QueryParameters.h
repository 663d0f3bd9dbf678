#pragma once

#include <httplib.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "tools/ztinbox/api/Moment.h"

namespace zt::inbox {

/// The parameters of a request's query. Everything throws InputFault with a text that names the
/// parameter and says how it has to be.
class QueryParameters {
 public:
  /// A name that is not in `known`, or one that is given twice, is a fault: a filter that is
  /// misspelt must not mean all reports.
  QueryParameters(const httplib::Request& request, std::initializer_list<std::string_view> known);

  /// Nothing when it is not given; so are the others.
  std::optional<std::string> text(const char* name) const;
  std::optional<std::uint64_t> whole(const char* name, std::uint64_t least,
                                     std::uint64_t most) const;
  std::optional<double> seconds(const char* name, double most) const;
  std::optional<bool> flag(const char* name) const;
  std::optional<Moment> moment(const char* name) const;

 private:
  const httplib::Params& _parameters;
};

/// A number that is the whole of `text`.
std::optional<std::uint64_t> parseWhole(std::string_view text);

}  // namespace zt::inbox
