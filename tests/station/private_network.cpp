#include "station/private_network.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <exception>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include <arpa/inet.h>
#include <fcntl.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <netinet/if_ether.h>
#include <netinet/ip.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

#include "station/child_process.h"

namespace station {

namespace {

constexpr const char* kNetwork = "10.0.1.0/24";
constexpr const char* kCounterLink = "counter0";
constexpr const char* kShopLink = "shop0";

[[noreturn]] void fail(const std::string& what) {
  throw std::runtime_error("no network namespaces can be made on this machine: " + what + ": " +
                           std::strerror(errno));
}

platform::FileDescriptor currentNamespace() {
  platform::FileDescriptor descriptor(open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC));
  if (!descriptor) {
    fail("/proc/thread-self/ns/net");
  }
  return descriptor;
}

// Runs `work` on a thread that has entered a namespace by `enter`, and waits for its end.
void onThread(const std::function<void()>& enter, const std::function<void()>& work) {
  std::exception_ptr failure;
  std::thread([&] {
    try {
      enter();
      work();
    } catch (...) {
      failure = std::current_exception();
    }
  }).join();
  if (failure) {
    std::rethrow_exception(failure);
  }
}

void onThreadIn(const platform::FileDescriptor& space, const std::function<void()>& work) {
  onThread(
      [&space] {
        if (setns(space.get(), CLONE_NEWNET) != 0) {
          fail("setns");
        }
      },
      work);
}

void writeFile(const char* file, const std::string& text) {
  std::ofstream out(file);
  if (!(out << text << std::flush)) {
    fail(file);
  }
}

// Somebody who is not root may make networks in a user namespace, in which he passes for root.
void becomeAble() {
  const uid_t user = geteuid();
  const gid_t group = getegid();
  if (user == 0) {
    return;
  }
  if (unshare(CLONE_NEWUSER) != 0) {
    fail("unshare, as a user who is not root");
  }
  writeFile("/proc/self/setgroups", "deny");
  writeFile("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
  writeFile("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
}

platform::FileDescriptor newNamespace() {
  platform::FileDescriptor made;
  onThread(
      [] {
        if (unshare(CLONE_NEWNET) != 0) {
          fail("unshare");
        }
      },
      [&made] { made = currentNamespace(); });
  return made;
}

std::string pathOf(const platform::FileDescriptor& descriptor) {
  return "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(descriptor.get());
}

void ip(const std::string& arguments) {
  std::vector<std::string> command{"ip"};
  std::istringstream words(arguments);
  for (std::string word; words >> word;) {
    command.push_back(word);
  }
  char name[] = "/tmp/lumo-ip-XXXXXX";
  const platform::FileDescriptor file(mkstemp(name));
  const std::string end = ChildProcess(command, {{"PATH", "/usr/sbin:/usr/bin:/sbin:/bin"}}, name).end();
  std::ifstream said(name);
  std::string line;
  std::getline(said, line);
  unlink(name);
  if (end != "exit status 0") {
    throw std::runtime_error("ip " + arguments + ": " + end + ": " + line);
  }
}

// The packets that arrive at the shop's end of the cable.
platform::FileDescriptor watcher() {
  platform::FileDescriptor watch(
      socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, htons(ETH_P_ALL)));
  sockaddr_ll place = {};
  place.sll_family = AF_PACKET;
  place.sll_protocol = htons(ETH_P_ALL);
  place.sll_ifindex = static_cast<int>(if_nametoindex(kShopLink));
  if (!watch || bind(watch.get(), reinterpret_cast<sockaddr*>(&place), sizeof place) != 0) {
    fail("a watch over the cable");
  }
  return watch;
}

std::string text(const void* address) {
  std::array<char, INET_ADDRSTRLEN> bytes = {};
  inet_ntop(AF_INET, address, bytes.data(), bytes.size());
  return bytes.data();
}

template <class Header>
Header headerAt(std::string_view packet, std::size_t at) {
  Header header = {};
  if (packet.size() >= at + sizeof header) {
    std::memcpy(&header, packet.data() + at, sizeof header);
  }
  return header;
}

void account(std::string_view packet, PrivateNetwork::Traffic& traffic) {
  const auto ethernet = headerAt<ether_header>(packet, 0);
  const int type = ntohs(ethernet.ether_type);
  if (type == ETHERTYPE_ARP) {
    const auto arp = headerAt<ether_arp>(packet, sizeof ethernet);
    if (ntohs(arp.ea_hdr.ar_op) == ARPOP_REQUEST) {
      traffic.sought.insert(text(arp.arp_tpa));
    }
    return;
  }
  if (type != ETHERTYPE_IP) {
    traffic.other.insert("ethertype " + std::to_string(type));
    return;
  }
  const auto header = headerAt<iphdr>(packet, sizeof ethernet);
  const std::string target = text(&header.daddr);
  if (header.protocol != IPPROTO_TCP) {
    traffic.other.insert("protocol " + std::to_string(header.protocol) + " to " + target);
    return;
  }
  const auto tcp = headerAt<tcphdr>(packet, sizeof ethernet + std::size_t{header.ihl} * 4);
  if (tcp.syn != 0 && tcp.ack == 0) {
    traffic.connected.emplace(target, ntohs(tcp.dest));
  }
}

}  // namespace

PrivateNetwork::PrivateNetwork() {
  becomeAble();
  shop_ = newNamespace();
  counter_ = newNamespace();
  changeCounter("link set lo up");
  // Numbers below are free for interfaces that a test wants listed before.
  changeCounter(std::string("link add name ") + kCounterLink + " index 100 type veth peer name " + kShopLink +
                " netns " + pathOf(shop_));
  // Without a word of the next generation's protocol on the cable, all that is there is the kiosk's.
  changeCounter(std::string("link set ") + kCounterLink + " addrgenmode none");
  changeCounter(std::string("address add ") + kCounter + "/24 dev " + kCounterLink);
  inShop([this] {
    ip("link set lo up");
    ip(std::string("link set ") + kShopLink + " addrgenmode none");
    ip(std::string("link set ") + kShopLink + " up");
    watch_ = watcher();
  });
  changeCounter(std::string("link set ") + kCounterLink + " up");
  // The kernel keeps few packets for who does not fetch them.
  watcher_ = std::thread([this] {
    while (!ended_) {
      pollfd arrived{watch_.get(), POLLIN, 0};
      poll(&arrived, 1, 20);
      takePackets();
    }
  });
}

PrivateNetwork::~PrivateNetwork() {
  ended_ = true;
  watcher_.join();
}

std::vector<std::string> PrivateNetwork::atCounter(const std::string& program) const {
  return {"nsenter", "--net=" + pathOf(counter_), program};
}

void PrivateNetwork::inCounter(const std::function<void()>& work) const {
  onThreadIn(counter_, work);
}

void PrivateNetwork::inShop(const std::function<void()>& work) const {
  onThreadIn(shop_, work);
}

void PrivateNetwork::changeCounter(const std::string& arguments) const {
  inCounter([&arguments] { ip(arguments); });
}

void PrivateNetwork::addShopAddress(const std::string& address) const {
  inShop([&address] { ip("address add " + address + "/24 dev " + kShopLink); });
}

void PrivateNetwork::refuseElsewhere() const {
  inShop([] {
    ip(std::string("route add local ") + kNetwork + " dev lo");
    // The counter's own has to be reached with the answers.
    ip(std::string("route add unicast ") + kCounter + " dev " + kShopLink + " table local");
  });
}

void PrivateNetwork::takePackets() {
  const std::lock_guard lock(mutex_);
  std::array<char, 2048> bytes = {};
  sockaddr_ll from = {};
  socklen_t size = sizeof from;
  ssize_t length = 0;
  while ((length = recvfrom(watch_.get(), bytes.data(), bytes.size(), 0, reinterpret_cast<sockaddr*>(&from),
                            &size)) > 0) {
    if (from.sll_pkttype != PACKET_OUTGOING) {
      account({bytes.data(), static_cast<std::size_t>(length)}, traffic_);
    }
    size = sizeof from;
  }
  tpacket_stats lost = {};
  size = sizeof lost;
  if (getsockopt(watch_.get(), SOL_PACKET, PACKET_STATISTICS, &lost, &size) != 0 || lost.tp_drops > 0) {
    traffic_.other.insert("packets that nobody saw");
  }
}

PrivateNetwork::Traffic PrivateNetwork::traffic() {
  takePackets();
  const std::lock_guard lock(mutex_);
  return traffic_;
}

std::map<std::string, PrivateNetwork::Packets> PrivateNetwork::packets() const {
  std::map<std::string, Packets> found;
  const auto look = [&found](const std::string& prefix) {
    std::ifstream file("/proc/thread-self/net/dev");
    for (std::string line; std::getline(file, line);) {
      const auto colon = line.find(':');
      if (colon == std::string::npos) {
        continue;
      }
      std::string name = line.substr(line.find_first_not_of(' '), std::string::npos);
      name.resize(name.find(':'));
      std::istringstream fields(line.substr(colon + 1));
      // Eight columns of what was received, bytes and packets first, then the same of what was sent.
      std::array<long, 10> columns = {};
      for (long& column : columns) {
        fields >> column;
      }
      found[prefix + name] = {columns[9], columns[1]};
    }
  };
  inCounter([&look] { look("counter: "); });
  inShop([&look] { look("shop: "); });
  return found;
}

std::set<std::string> PrivateNetwork::waysOut() const {
  std::set<std::string> found;
  const auto look = [&found] {
    std::ifstream file("/proc/thread-self/net/route");
    std::string line;
    std::getline(file, line);
    while (std::getline(file, line)) {
      std::istringstream fields(line);
      std::string link;
      std::string destination;
      std::string gateway;
      fields >> link >> destination >> gateway;
      // The network as the kernel writes it, which needs no gateway.
      if (destination != "0001000A" || gateway != "00000000") {
        found.insert(line);
      }
    }
  };
  inCounter(look);
  inShop(look);
  return found;
}

}  // namespace station
