#include "support/EmailAddress.h"

#include <array>
#include <memory>

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include "platform/log.h"

namespace lumo {

namespace {

struct Free {
  void operator()(pcre2_code* code) const { pcre2_code_free(code); }
  void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
};

using Code = std::unique_ptr<pcre2_code, Free>;

Code compile() {
  int error = 0;
  PCRE2_SIZE where = 0;
  Code code(pcre2_compile(reinterpret_cast<PCRE2_SPTR>(kEmailExpression.data()), kEmailExpression.size(),
                          PCRE2_ANCHORED, &error, &where, nullptr));
  if (!code) {
    platform::NSLog("The expression for e-mail addresses is not understood: error %d at %zu", error, where);
  }
  return code;
}

}  // namespace

const std::string_view kEmailExpression =
    R"re((?:[a-z0-9!#$%\&'*+/=?\^_`{|}~-]+(?:\.[a-z0-9!#$%\&'*+/=?\^_`{|}~-]+)*)re"
    R"re(|"(?:[\x01-\x08\x0b\x0c\x0e-\x1f\x21\x23-\x5b\x5d-\x7f]|\\[\x01-\x09\x0b\x0c\x0e-\x7f])*")@)re"
    R"re((?:(?:[a-z0-9](?:[a-z0-9-]*[a-z0-9])?\.)+[a-z0-9](?:[a-z0-9-]*[a-z0-9])?)re"
    R"re(|\[(?:(?:25[0-5]|2[0-4][0-9]|[01]?[0-9][0-9]?)\.){3}(?:25[0-5]|2[0-4][0-9]|[01]?[0-9][0-9]?)re"
    R"re(|[a-z0-9-]*[a-z0-9]:(?:[\x01-\x08\x0b\x0c\x0e-\x1f\x21-\x5a\x53-\x7f]|\\[\x01-\x09\x0b\x0c\x0e-\x7f])+)\]))re";

bool matchesEmailExpression(std::string_view text) {
  static const Code code = compile();
  const std::unique_ptr<pcre2_match_data, Free> match(pcre2_match_data_create(1, nullptr));
  if (!code || !match) {
    return false;
  }
  // The alternative matcher follows all ways through the expression at once. The usual one tries them one
  // after another, and there are more of them than time.
  std::array<int, 4096> workspace;
  const int result = pcre2_dfa_match(code.get(), reinterpret_cast<PCRE2_SPTR>(text.data()), text.size(), 0, 0,
                                     match.get(), nullptr, workspace.data(), workspace.size());
  // The longest match comes first; 0 says that there was no room for shorter ones.
  return result >= 0 && pcre2_get_ovector_pointer(match.get())[1] == text.size();
}

}  // namespace lumo
