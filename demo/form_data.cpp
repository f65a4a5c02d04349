#include "form_data.h"

#include "text.h"

namespace juniva {
namespace {

constexpr std::size_t kMaximumFields = 1000;
constexpr std::string_view kFormType = "application/x-www-form-urlencoded";

bool isFormType(std::string_view contentType) {
  const std::string_view type = trimmed(contentType.substr(0, contentType.find(';')));
  if (type.size() != kFormType.size()) return false;
  for (std::size_t at = 0; at < type.size(); ++at) {
    const char lower = type[at] >= 'A' && type[at] <= 'Z' ? static_cast<char>(type[at] + 32) : type[at];
    if (lower != kFormType[at]) return false;
  }
  return true;
}

}  // namespace

std::optional<FormData> FormData::parse(std::string_view text) {
  FormData form;
  while (!text.empty()) {
    const std::size_t end = text.find('&');
    const std::string_view piece = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    if (piece.empty()) continue;
    const std::size_t equals = piece.find('=');
    auto name = percentDecode(piece.substr(0, equals), true);
    auto value =
        equals == std::string_view::npos ? std::string() : percentDecode(piece.substr(equals + 1), true);
    if (!name || !value || value->find('\0') != std::string::npos) return std::nullopt;
    if (form.mFields.size() == kMaximumFields) return std::nullopt;
    form.mFields.emplace_back(std::move(*name), std::move(*value));
  }
  return form;
}

std::optional<std::string> FormData::value(std::string_view name) const {
  for (const auto& [fieldName, fieldValue] : mFields) {
    if (fieldName == name) return fieldValue;
  }
  return std::nullopt;
}

std::string FormData::text(std::string_view name) const {
  return value(name).value_or(std::string());
}

std::optional<FormData> formOfRequest(const Request& request) {
  if (request.method != "POST") return FormData::parse(request.query);
  if (request.body.empty()) return FormData();
  if (!isFormType(request.contentType)) return std::nullopt;
  return FormData::parse(request.body);
}

}  // namespace juniva
