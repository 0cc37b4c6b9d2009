// Networks of a test's own: namespaces, which nobody else sees and which end with the process, however it ends.
#pragma once

#include <net/if.h>
#include <poll.h>
#include <sched.h>

#include "common/Descriptor.h"
#include "support/Process.h"

namespace VELTRO::KELVO::Test {

using ClientLib::Descriptor;

inline Descriptor OwnNamespace() {
  return Descriptor(open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC));
}

// The calling thread, its children and its sockets are in the namespace as long as this lives.
class Inside {
 public:
  explicit Inside(const Descriptor& space) { EXPECT_EQ(setns(space.Get(), CLONE_NEWNET), 0); }
  ~Inside() { EXPECT_EQ(setns(before_.Get(), CLONE_NEWNET), 0); }

 private:
  Descriptor before_ = OwnNamespace();
};

// The test leaves the machine's own network first and never sends anything there.
class NetworkTest : public testing::Test {
 protected:
  void SetUp() override {
    if (unshare(CLONE_NEWNET) != 0) GTEST_SKIP() << "This user may not make network namespaces.";
  }
};

// A host: a namespace of its own.
class Host {
 public:
  // A host that is a switch, too, and has these addresses (with their prefix lengths) on it, "br0".
  explicit Host(const std::string& addresses) : Host() {
    Ip("link add name br0 type bridge\nlink set br0 addrgenmode none up" + Adding(addresses, "br0"));
  }
  // A host with these addresses on its "eth0", at the end of a cable from a port of the switch.
  Host(Host& other, const std::string& port, const std::string& addresses) : Host() {
    const std::string here = "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(space_.Get());
    other.Ip("link add name " + port + " type veth peer name eth0 netns " + here + "\nlink set dev " + port +
             " addrgenmode none master br0 up");
    Ip("link set eth0 addrgenmode none up" + Adding(addresses, "eth0"));
    other.Await("bridge link show dev " + port +
                " | grep -q forwarding && ip link show br0 | grep -q 'state UP'");
  }
  // One that is connected to nothing.
  Host() {
    const Descriptor before = OwnNamespace();
    EXPECT_EQ(unshare(CLONE_NEWNET), 0);
    space_ = OwnNamespace();
    EXPECT_EQ(setns(before.Get(), CLONE_NEWNET), 0);
    Ip("link set lo up");
  }
  const Descriptor& Space() const { return space_; }
  void Ip(const std::string& commands) {
    const Inside inside(space_);
    const auto [code, output] = Shell("ip -batch - <<'END'\n" + commands + "\nEND");
    EXPECT_EQ(code, 0) << commands << output;
    Await("! ip -6 addr show tentative | grep -q inet6");  // takes a moment, also with "nodad"
  }
  // Until the shell command succeeds.
  void Await(const std::string& command) {
    const Inside inside(space_);
    EXPECT_EQ(
        Shell("for i in $(seq 3000); do if " + command + "; then exit 0; fi; sleep 0.01; done; exit 1").first,
        0);
  }
  static std::string Adding(const std::string& addresses, const std::string& device) {
    std::string commands;
    std::istringstream words(addresses);
    for (std::string address; words >> address;)
      commands += "\naddr add " + address + " dev " + device + " nodad";
    return commands;
  }

 private:
  Descriptor space_;
};

// A UDP socket of the host that it is made in, on a port that it shares, in the group of searches on eth0.
class GroupSocket {
 public:
  GroupSocket(int family, int port) : socket_(::socket(family, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    const int yes = 1;
    setsockopt(socket_.Get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    const ip_mreqn out{{}, {}, static_cast<int>(if_nametoindex("eth0"))};
    setsockopt(socket_.Get(), IPPROTO_IP, IP_MULTICAST_IF, &out, sizeof out);
    group_req request{if_nametoindex("eth0"), Group(family, port)};
    EXPECT_EQ(setsockopt(socket_.Get(), family == AF_INET ? int{IPPROTO_IP} : int{IPPROTO_IPV6},
                         MCAST_JOIN_GROUP, &request, sizeof request),
              0);
    sockaddr_storage any{};
    any.ss_family = static_cast<sa_family_t>(family);
    reinterpret_cast<sockaddr_in&>(any).sin_port = htons(static_cast<std::uint16_t>(port));
    EXPECT_EQ(bind(socket_.Get(), reinterpret_cast<const sockaddr*>(&any), sizeof any), 0);
  }
  static sockaddr_storage Group(int family, int port) {
    sockaddr_storage storage{};
    const auto number = htons(static_cast<std::uint16_t>(port));
    if (family == AF_INET) {
      const sockaddr_in group{AF_INET, number, {inet_addr("239.255.255.250")}, {}};
      std::memcpy(&storage, &group, sizeof group);
    } else {
      sockaddr_in6 group{AF_INET6, number, 0, {}, if_nametoindex("eth0")};
      inet_pton(AF_INET6, "ff02::c", &group.sin6_addr);
      std::memcpy(&storage, &group, sizeof group);
    }
    return storage;
  }
  // The next datagram that comes in time; its sender is who Send answers from then on.
  std::string Receive(int timeoutMs) {
    char bytes[2000];
    pollfd entry{socket_.Get(), POLLIN, 0};
    if (poll(&entry, 1, timeoutMs) <= 0) return "";
    socklen_t length = sizeof Peer;
    const ssize_t count =
        recvfrom(socket_.Get(), bytes, sizeof bytes, 0, reinterpret_cast<sockaddr*>(&Peer), &length);
    return {bytes, static_cast<std::size_t>(count)};
  }
  void Send(const std::string& bytes) const {
    sendto(socket_.Get(), bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&Peer),
           sizeof Peer);
  }

  sockaddr_storage Peer{};

 private:
  Descriptor socket_;
};

}  // namespace VELTRO::KELVO::Test
