#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <gtk/gtk.h>

namespace platform {

// The first of `types` that the drag offers, or null.
const char* offeredType(GdkDrop* drop, const std::vector<const char*>& types);

// Reads what the drag offers under `type`. `completion` is called once on the main thread, never from within
// this call, unless the source neither answers nor goes away; absent when there is more than `limit` bytes or
// the source fails, with a line in the log that says which.
void readDrop(GdkDrop* drop, const char* type, std::size_t limit,
              std::function<void(std::optional<std::string>)> completion);

}  // namespace platform
