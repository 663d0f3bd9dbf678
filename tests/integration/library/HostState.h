#pragma once

#include <map>
#include <string>

namespace zt::test {

/// What a library could change of the process that it works in, each thing as a text under its
/// name: threads, signals, locale, working directory, environment, descriptors, children.
using HostState = std::map<std::string, std::string>;

HostState stateOfThisProcess();

/// A line for each difference. Descriptors that the library keeps (its connection) are none, as
/// long as no program that the host starts inherits them and none is a connection in the place of
/// a standard stream.
std::string differences(const HostState& before, const HostState& after);

}  // namespace zt::test
