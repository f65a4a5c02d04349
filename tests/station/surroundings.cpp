#include "station/surroundings.h"

#include <unistd.h>

namespace station {

std::vector<std::string> inOwnMounts(const std::string& script, const std::vector<std::string>& arguments,
                                     const std::string& program) {
  std::vector<std::string> command{"unshare", "--mount", "--propagation", "private"};
  std::string last = "exec \"$0\"";
  if (geteuid() != 0) {
    // The right to mount comes with a user namespace, and must be given back: the engine's sandbox starts for
    // root or for somebody without any such rights.
    command.insert(command.end(), {"--user", "--map-current-user", "--keep-caps"});
    last = "exec setpriv --ambient-caps=-all --inh-caps=-all \"$0\"";
  }
  command.insert(command.end(), {"sh", "-ec", script + "\n" + last, program});
  command.insert(command.end(), arguments.begin(), arguments.end());
  return command;
}

std::vector<std::string> asUser(unsigned id, const std::vector<std::string>& command) {
  const std::string number = std::to_string(id);
  std::vector<std::string> whole;
  if (geteuid() == 0) {
    whole = {"setpriv", "--reuid", number, "--regid", number, "--clear-groups", "--pdeathsig", "KILL"};
  } else {
    // The same user under another number.
    whole = {"unshare", "--user", "--map-user=" + number, "--map-group=" + number};
  }
  whole.insert(whole.end(), command.begin(), command.end());
  return whole;
}

}  // namespace station
