#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "browser/ReturnPage.h"
#include "platform/web_view.h"

// What the photo server's answers and paths tell the browser to do. Pure decisions, but for the line that
// each cleaned path gives in the log; any thread.

namespace lumo {

// What the header fields of an answer ask for. Names count exactly as received, values in any case.
enum class HeaderWish { None, Scan, PrintReceipt };
HeaderWish headerWish(const platform::HeaderFields& fields);

// `fields` with the address of the page under "respurlstring", in place of a field of that name. An absent
// address gives none.
platform::HeaderFields fieldsWithAddress(platform::HeaderFields fields,
                                         const std::optional<platform::Url>& address);

// Where the browser goes after a receipt: the root of the server of `address`, with `scanReturn` (absent for
// none) at its end. A server without a port gives a text that is no address.
ReturnPage receiptReturnPage(const std::optional<platform::Url>& address,
                             const std::optional<std::string>& scanReturn);

// Whether the path ends a registration, whatever the configured list says. An absent path never does.
bool isRegistrationSave(const std::optional<std::string>& path);

// The configured comma-separated list of paths that release an order, cleaned and in lower case. An absent
// list gives no path; an empty item is kept and stands for "/".
std::set<std::string> releasePaths(const std::optional<std::string>& list);
// Whether `paths` has the path or its last component.
bool isReleasePath(const std::optional<std::string>& path, const std::set<std::string>& paths);

// What the legacy view does when a frame has loaded from a path: note it, end a registration, or release the
// order of the answer's fields.
enum class LegacyAction { Log, Save, Release };
struct LegacyRoute {
  const char* path;
  LegacyAction action;
  // Whether the closing is logged.
  bool isLogged = false;
};
// The route of exactly this path, in any case; null for none and for an absent path. Lives for ever.
const LegacyRoute* legacyRoute(const std::optional<std::string>& path);

// The request to load instead, with the scan header that it has not; absent when it may go on as it is.
std::optional<platform::UrlRequest> requestWithScanHeader(const platform::UrlRequest& request,
                                                          bool hasCamera);

// The request header that tells the server whether this kiosk can scan.
inline constexpr char kScanRequestHeader[] = "Glimmerpad-Scan";
// The answer's header field that begins a scan, or closes the window of the legacy view.
inline constexpr char kScannerHeader[] = "Glimmerpad-Plus-Scanner";
// The answer's header field that names the page to return to.
inline constexpr char kScanReturnHeader[] = "Scan-Return";

}  // namespace lumo
