#include "access_log.h"

#include "text.h"

namespace juniva {

std::string accessLine(const AccessRecord& record) {
  std::string line = logField(record.time);
  line += ' ';
  line += logField(record.method, 64);
  line += ' ';
  line += logField(record.target);
  line += ' ';
  line += record.status == 0 ? "-" : std::to_string(record.status);
  line += " scan=";
  line += logField(record.scan, 512);
  line += " agent=\"";
  line += quotedLogField(record.userAgent, 1024);
  line += '"';
  return line;
}

}  // namespace juniva
