#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "station/child_process.h"

namespace station {

// A picture of a printed page, 72 points to the inch.
struct PrintedPage {
  int width = 0;
  int height = 0;
  std::string pixels;  // Red, green and blue of each point, rows without padding.

  // The row is all of about this colour, from edge to edge.
  bool rowIs(int row, int red, int green, int blue) const;
  // How many points are dark.
  int darkPoints() const;
};

// A print service of the test's own, with all its folders in a temporary one: the scheduler of the system on
// a port of the loopback interface, and printers that make a PDF of each job. The machine's own print service
// is not touched. It needs root, since the PDF printer is for root alone.
class PrintService {
 public:
  static bool isPossible();

  // Throws std::runtime_error when it does not start.
  PrintService();
  ~PrintService();
  PrintService(const PrintService&) = delete;
  PrintService& operator=(const PrintService&) = delete;

  // What the programs that print are to have under CUPS_SERVER.
  std::string server() const { return "127.0.0.1:" + std::to_string(port_); }
  // A printer whose paper is a roll of that width.
  void addPrinter(const std::string& name, int millimetres = 80);
  void disable(const std::string& printer);
  // The PDFs of the jobs that are done, the first one first.
  std::vector<std::filesystem::path> jobs() const;
  // The pages of a PDF.
  std::vector<PrintedPage> pages(const std::filesystem::path& job) const;
  std::string log() const;

 private:
  void run(const std::vector<std::string>& command) const;
  void writeConfiguration() const;

  std::filesystem::path folder_;
  int port_ = 0;
  Environment environment_;
  std::unique_ptr<ChildProcess> scheduler_;
};

}  // namespace station
