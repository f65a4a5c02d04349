// Pages for trying out what a kiosk does besides showing orders: scans, dialogs, focused fields, failing
// links.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "order_pages.h"
#include "route_table.h"

namespace juniva {

// The paths that hand an order over to the photo station, whatever application took it.
inline constexpr std::array<std::string_view, 7> kReleasePaths = {"/registrationorders/photostationdata",
                                                                  "/registrationorders/posdata",
                                                                  "/registrationam/photostationdata",
                                                                  "/registrationam/posdata",
                                                                  "/registrationbookeo/photostationdata",
                                                                  "/registrationbookeo/posdata",
                                                                  "/gradorders/gowndata"};

// The order that is always there, so that everything can be tried without placing one.
const Order& sampleOrder();

// One row for each trial page; "/try" leads to all of them. `pages` outlives the rows.
std::vector<Route> trialRoutes(const OrderPages& pages);

}  // namespace juniva
