#include "tools/common/manual/Notes.h"

namespace zt::manual {

std::vector<Note> reportNotes() {
  return {
      {"DESCRIPTION",
       "A program that is a shell script, an installer's hook or a person at a terminal reports\n"
       "its run with this command. A report is described in JSON or by options, written as a SOAP\n"
       "request, and sent to the server that the customer's configuration document names. What\n"
       "the server does not accept is kept as a file in the store and can be sent again later.\n"},
      {"EXIT STATUS",
       "- 0: Done: accepted, saved with --save, or nothing left in the store.\n"
       "- 1: Not accepted, and saved instead; something is left in the store; a check failed.\n"
       "- 2: Wrong usage or wrong input; nothing was sent or saved.\n"
       "- 3: The machine failed: a file cannot be read or written, there is no session bus.\n"},
      {"ENVIRONMENT",
       "- XDG_DATA_HOME: The folder of the user's data (default: ~/.local/share).\n"
       "- http_proxy, https_proxy, all_proxy, no_proxy: Which proxy is used.\n"
       "- DBUS_SESSION_BUS_ADDRESS: The session bus, for broadcasts to the companion.\n"},
      {"FILES",
       "- $XDG_DATA_HOME/Kelvane/NAME/reports/{ID}.ztr: A saved report of the program NAME.\n"
       "- $XDG_DATA_HOME/Kelvane/NAME/set-aside: What store --set-aside took out of the way.\n"},
      {"EXAMPLES",
       "    ztreport send report.json --config-url http://127.0.0.1:8025/reporting/kelvane.xml\n"
       "    ztreport run --customer Kelvane --start setup --step ENTER:Copy --end finish\n"
       "    ztreport doctor --customer Kelvane\n"},
      {"SEE ALSO", "ztinbox(1), ztportal(3)\n"},
  };
}

std::vector<Note> inboxNotes() {
  return {
      {"DESCRIPTION",
       "A reporting server on this machine, with nothing to configure. It serves a configuration\n"
       "document that points at itself at /reporting/*.xml, tells its version, takes reports at\n"
       "/soap and /soap-test, and prints a line for each. It also answers as an HTTP proxy, so a\n"
       "program that was built for any customer can be pointed at it with http_proxy. It\n"
       "misbehaves on purpose when it is told to, by options or while it runs.\n"},
      {"EXIT STATUS",
       "- 0: Ended by SIGINT or SIGTERM.\n"
       "- 2: Wrong usage or a wrong scenario.\n"
       "- 3: The machine failed: the address is in use, a file cannot be read.\n"},
      {"EXAMPLES",
       "    ztinbox --answer refuse\n"
       "    http_proxy=http://127.0.0.1:8025 ztreport run --customer Kelvane\n"},
      {"SEE ALSO", "ztreport(1), ztportal(3)\n"},
  };
}

}  // namespace zt::manual
