#pragma once

#include <map>
#include <string>

namespace zt::test {

/// What a library could change of the process that it works in, each thing as a text under its
/// name: threads, signals, locale, working directory, environment, descriptors, children.
using HostState = std::map<std::string, std::string>;

HostState stateOfThisProcess();

/// A line for each difference, except for new file descriptors that the library may keep: those that
/// no subprocess of the host inherits, unless they are a connection in the place of a standard
/// stream, and libcurl's own pair of sockets.
std::string differences(const HostState& before, const HostState& after);

}  // namespace zt::test
