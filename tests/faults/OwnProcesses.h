#pragma once

namespace zt::torture {

/// Goes on in a process that sees itself and its children alone, where the machine permits that.
/// The library looks through all processes several times a delivery; this way the campaigns do not
/// try the same call for each of a machine's hundreds. Where it is not permitted they take longer.
///
/// The first process waits for the end of the second, and ends with its status; its own end is the
/// end of all.
void leaveOtherProcesses();

}  // namespace zt::torture
