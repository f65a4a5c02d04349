#include "station/print_service.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

#include "platform/file_descriptor.h"

namespace station {

namespace fs = std::filesystem;

namespace {

constexpr const char* kDescription = "/usr/share/ppd/cups-pdf/CUPS-PDF_opt.ppd";
constexpr int kDark = 128;

std::string contents(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

int freePort() {
  const platform::FileDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* general = reinterpret_cast<sockaddr*>(&address);
  if (bind(socket.get(), general, size) != 0 || getsockname(socket.get(), general, &size) != 0) {
    throw std::runtime_error("no free port");
  }
  return ntohs(address.sin_port);
}

// The number of the job in "Receipt-job_12.pdf".
int jobNumber(const fs::path& file) {
  const std::string name = file.stem();
  const auto at = name.rfind("job_");
  return at == std::string::npos ? 0 : std::atoi(name.c_str() + at + 4);
}

PrintedPage readPicture(const fs::path& file) {
  std::istringstream in(contents(file));
  std::string kind;
  int most = 0;
  PrintedPage page;
  in >> kind >> page.width >> page.height >> most;
  in.get();
  page.pixels = in.str().substr(static_cast<std::size_t>(in.tellg()));
  if (kind != "P6" || most != 255 ||
      page.pixels.size() !=
          static_cast<std::size_t>(page.width) * static_cast<std::size_t>(page.height) * 3) {
    throw std::runtime_error(file.string() + " is no picture");
  }
  return page;
}

}  // namespace

bool PrintedPage::rowIs(int row, int red, int green, int blue) const {
  constexpr int kTolerance = 60;
  const int wanted[] = {red, green, blue};
  for (std::size_t at = static_cast<std::size_t>(row * width) * 3;
       at < static_cast<std::size_t>((row + 1) * width) * 3; ++at) {
    if (std::abs(static_cast<unsigned char>(pixels.at(at)) - wanted[at % 3]) > kTolerance) {
      return false;
    }
  }
  return true;
}

int PrintedPage::darkPoints() const {
  int count = 0;
  for (std::size_t at = 0; at + 2 < pixels.size(); at += 3) {
    const auto isDark = [](char value) { return static_cast<unsigned char>(value) < kDark; };
    count += isDark(pixels[at]) && isDark(pixels[at + 1]) && isDark(pixels[at + 2]) ? 1 : 0;
  }
  return count;
}

bool PrintService::isPossible() {
  return geteuid() == 0;
}

PrintService::PrintService() : port_(freePort()) {
  char name[] = "/tmp/lumo-printers-XXXXXX";
  if (mkdtemp(name) == nullptr) {
    throw std::runtime_error("no folder for the print service");
  }
  folder_ = name;
  // Filters and printers run for users of their own.
  fs::permissions(folder_, fs::perms(0755));
  const char* path = std::getenv("PATH");
  environment_ = {{"PATH", std::string(path == nullptr ? "/usr/bin:/bin" : path) + ":/usr/sbin:/sbin"},
                  {"HOME", folder_ / "etc"},
                  {"CUPS_SERVER", server()},
                  {"LC_ALL", "C"}};
  writeConfiguration();
  // The PDF printer knows one place for its configuration, so that is put over it, for this scheduler alone.
  // The copy of the program runs without the confinement that the machine may have for the usual path.
  fs::copy_file("/usr/sbin/cupsd", folder_ / "cupsd");
  const std::string folder = folder_;
  scheduler_ = std::make_unique<ChildProcess>(
      std::vector<std::string>{"unshare", "--mount", "sh", "-c",
                               "mount --bind " + folder + "/etc /etc/cups && exec " + folder +
                                   "/cupsd -f -c " + folder + "/etc/cupsd.conf -s " + folder +
                                   "/etc/cups-files.conf"},
      environment_, folder_ / "scheduler.txt");
  const bool runs = waitUntil([this] {
    ChildProcess question({"lpstat", "-r"}, environment_, folder_ / "question.txt");
    question.end();
    return contents(folder_ / "question.txt").find("scheduler is running") != std::string::npos;
  });
  if (!runs) {
    throw std::runtime_error("the print service does not run: " + contents(folder_ / "scheduler.txt") +
                             log());
  }
}

PrintService::~PrintService() {
  if (scheduler_ != nullptr) {
    scheduler_->send(SIGTERM);
    scheduler_->end();
  }
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

void PrintService::writeConfiguration() const {
  for (const char* part : {"etc", "cache", "state", "spool", "tmp", "log", "pdf", "pdfspool"}) {
    fs::create_directory(folder_ / part);
    fs::permissions(folder_ / part, fs::perms(0755));
  }
  for (const char* part : {"tmp", "pdf"}) {
    fs::permissions(folder_ / part, fs::perms(01777));
  }
  const std::string folder = folder_;
  std::ofstream(folder_ / "etc/cupsd.conf")
      << "LogLevel info\nListen " << server()
      << "\nBrowsing Off\nDefaultAuthType None\nWebInterface No\nMaxLogSize 0\n"
         "<Location />\nOrder allow,deny\nAllow all\n</Location>\n"
         "<Location /admin>\nOrder allow,deny\nAllow all\n</Location>\n"
         "<Policy default>\n<Limit All>\nOrder allow,deny\nAllow all\n</Limit>\n</Policy>\n";
  std::ofstream(folder_ / "etc/cups-files.conf")
      << "ServerRoot " << folder << "/etc\nRequestRoot " << folder << "/spool\nCacheDir " << folder
      << "/cache\nStateDir " << folder << "/state\nTempDir " << folder << "/tmp\nAccessLog " << folder
      << "/log/access\nErrorLog " << folder << "/log/error\nPageLog " << folder << "/log/page\nPrintcap "
      << folder << "/printcap\nSystemGroup root\n";
  std::ofstream(folder_ / "etc/cups-pdf.conf")
      << "Out " << folder << "/pdf\nAnonDirName " << folder << "/pdf\nAnonUser nobody\nSpool " << folder
      << "/pdfspool\nLog " << folder << "/log\n";
}

void PrintService::run(const std::vector<std::string>& command) const {
  const std::string end = ChildProcess(command, environment_, folder_ / "tools.txt").end();
  if (end != "exit status 0") {
    throw std::runtime_error(command.front() + ": " + end + ": " + contents(folder_ / "tools.txt"));
  }
}

void PrintService::addPrinter(const std::string& name, int millimetres) {
  // The description's usual sheet becomes a piece of roll.
  const std::string size = std::to_string(millimetres * 72 * 10 / 254) + " 600";
  std::string description = contents(kDescription);
  const auto replace = [&description](const std::string& before, const std::string& after) {
    const auto at = description.find(before);
    if (at == std::string::npos) {
      throw std::runtime_error("the PDF printer's description has no " + before);
    }
    description.replace(at, before.size(), after);
  };
  replace("*DefaultPageSize: A4", "*DefaultPageSize: Roll");
  replace("*DefaultPageRegion: A4", "*DefaultPageRegion: Roll");
  replace("*DefaultImageableArea: A4", "*DefaultImageableArea: Roll");
  replace("*DefaultPaperDimension: A4", "*DefaultPaperDimension: Roll");
  const std::string code = "/Roll: \"<</PageSize[" + size + "]/ImagingBBox null>>setpagedevice\"\n";
  replace("*PageSize A4", "*PageSize Roll" + code + "*PageSize A4");
  replace("*PageRegion A4", "*PageRegion Roll" + code + "*PageRegion A4");
  replace("*ImageableArea A4", "*ImageableArea Roll: \"0 0 " + size + "\"\n*ImageableArea A4");
  replace("*PaperDimension A4", "*PaperDimension Roll: \"" + size + "\"\n*PaperDimension A4");
  const fs::path file = folder_ / (name + ".ppd");
  std::ofstream(file) << description;
  run({"lpadmin", "-p", name, "-E", "-v", "cups-pdf:/", "-P", file});
}

void PrintService::disable(const std::string& printer) {
  run({"cupsdisable", printer});
}

std::vector<fs::path> PrintService::jobs() const {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(folder_ / "pdf")) {
    // The end of the file is written last.
    const std::string text = contents(entry.path());
    if (text.size() > 32 && text.find("%%EOF", text.size() - 32) != std::string::npos) {
      files.push_back(entry.path());
    }
  }
  std::sort(files.begin(), files.end(),
            [](const fs::path& one, const fs::path& other) { return jobNumber(one) < jobNumber(other); });
  return files;
}

std::vector<PrintedPage> PrintService::pages(const fs::path& job) const {
  const fs::path pictures = folder_ / ("pages of " + job.filename().string());
  fs::create_directory(pictures);
  run({"pdftoppm", "-r", "72", job, pictures / "page"});
  std::map<std::string, PrintedPage> pages;
  for (const auto& entry : fs::directory_iterator(pictures)) {
    pages[entry.path()] = readPicture(entry.path());
  }
  std::vector<PrintedPage> result;
  result.reserve(pages.size());
  for (auto& [name, page] : pages) {
    result.push_back(std::move(page));
  }
  fs::remove_all(pictures);
  return result;
}

std::string PrintService::log() const {
  return contents(folder_ / "log/error");
}

}  // namespace station
