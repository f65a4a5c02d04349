#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/file_descriptor.h"

namespace station {

// A /24 network that only this test has: two network namespaces with one cable between them and nothing else.
// In the counter's one the computer has the address 10.0.1.7; at the other end of the cable, in the shop's
// one, the test puts servers. Who makes this object stays where he is. The namespaces have no name; the
// kernel takes them away with the last process in them, however that ends.
class PrivateNetwork {
 public:
  static constexpr const char* kCounter = "10.0.1.7";

  // Throws std::runtime_error with one line when this machine lets nobody make networks. Without the rights
  // of root the whole program gets a user namespace, for which it must have one thread only.
  PrivateNetwork();
  ~PrivateNetwork();
  PrivateNetwork(const PrivateNetwork&) = delete;
  PrivateNetwork& operator=(const PrivateNetwork&) = delete;

  // The command that runs the program at the counter, under the same process number.
  std::vector<std::string> atCounter(const std::string& program) const;
  // Runs `work` there on a thread of its own and waits for its end. Threads that it starts stay there.
  void inCounter(const std::function<void()>& work) const;
  void inShop(const std::function<void()>& work) const;
  // Has the counter's network changed by ip(8).
  void changeCounter(const std::string& arguments) const;

  // Gives the shop this address of the network, "10.0.1.20". All others are silent: nobody is there.
  void addShopAddress(const std::string& address) const;
  // From here on the shop has every address of the network but the counter's, and refuses what nobody listens
  // for.
  void refuseElsewhere() const;

  // What has come out of the counter's end of the cable since the start.
  struct Traffic {
    // The addresses whose neighbours were asked for.
    std::set<std::string> sought;
    // Connections that were begun: address and port.
    std::set<std::pair<std::string, int>> connected;
    // Anything else, in words.
    std::set<std::string> other;
  };
  Traffic traffic();
  // The interfaces of both namespaces with the packets that each has sent and received, "counter0".
  struct Packets {
    long sent = 0;
    long received = 0;
    bool operator==(const Packets&) const = default;
  };
  std::map<std::string, Packets> packets() const;
  // The routes of both namespaces that lead beyond the network.
  std::set<std::string> waysOut() const;

 private:
  void takePackets();

  platform::FileDescriptor counter_;
  platform::FileDescriptor shop_;
  platform::FileDescriptor watch_;
  std::mutex mutex_;
  Traffic traffic_;
  std::atomic<bool> ended_{false};
  std::thread watcher_;
};

// The first base of a test at the counter: made before the station, whose screen would be a thread more.
class OnPrivateNetwork {
 protected:
  PrivateNetwork network;
};

}  // namespace station
