#pragma once

// Programs that start in surroundings other than those of the tests.

#include <string>
#include <vector>

namespace station {

// A command that runs `script` (as sh does, with the right to mount) where nobody else sees what it mounts,
// and then becomes `program` with the rights of whoever runs the tests. In the script, $1 and so on are
// `arguments`. The process stays the same one all the time.
std::vector<std::string> inOwnMounts(const std::string& script, const std::vector<std::string>& arguments,
                                     const std::string& program);

// A command that becomes `command` as another user: one whom the user database knows, or one whom it does
// not. Of the former only root can make use.
constexpr unsigned kNobody = 65534;
constexpr unsigned kStranger = 64998;
std::vector<std::string> asUser(unsigned id, const std::vector<std::string>& command);

}  // namespace station
