// Fields of a form, from a query or from the body of a POST request.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "http.h"

namespace juniva {

class FormData {
 public:
  // Reads "a=1&b=two+words". Nothing for a broken percent escape, text that is not UTF-8, a NUL, or more than
  // 1000 fields. Empty pieces between two '&' are passed over; a piece without '=' is a field with an empty
  // value.
  static std::optional<FormData> parse(std::string_view text);

  // The first field with this name. An absent field is nothing, an empty one an empty text.
  std::optional<std::string> value(std::string_view name) const;

  // The same, with an empty text for an absent field.
  std::string text(std::string_view name) const;

  std::size_t size() const { return mFields.size(); }

 private:
  std::vector<std::pair<std::string, std::string>> mFields;
};

// The form that a request carries: the body of a POST request, the query of any other. Nothing when it is
// malformed or when a body is not of the type application/x-www-form-urlencoded.
std::optional<FormData> formOfRequest(const Request& request);

}  // namespace juniva
