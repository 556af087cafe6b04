#include "hosts.hpp"

namespace processes {

namespace {

#define SKIP_UNLESS_USABLE(network) \
  if (!(network).usable()) { GTEST_SKIP() << "no network namespaces: " << (network).a.refusal(); }

const char* const kInterface = "dds.transport.rtps.interface=net";

struct Setting {
  const char* name;
  Words a, b;
  int loss = 0;
  int mtu = 1500;
};
void PrintTo(const Setting& each, std::ostream* out) { *out << each.name; }

class TwoHosts : public ProcessTest, public ::testing::WithParamInterface<Setting> {
 protected:
  // The shorter the lease, the more often the processes announce themselves.
  TwoHosts() { common = {lease(5000)}; }
  static Words joined(Words options, const Words& more) {
    options.insert(options.end(), more.begin(), more.end());
    return options;
  }
};

TEST_P(TwoHosts, ServeEachOther) {
  const Setting& setting = GetParam();
  const Network network(setting.loss, setting.mtu);
  SKIP_UNLESS_USABLE(network);
  Child replier = start("replier", setting.a, network.a.prefix());
  for (const int size : {16, 3000, 200000}) {
    const std::string count = std::to_string(repetitions(size > 100000 ? 40 : 200, size > 100000 ? 200 : 2000));
    Child requester =
        start("requester", joined(setting.b, {"count=" + count, "ahead=16", "size=" + std::to_string(size)}),
              network.b.prefix());
    EXPECT_EQ(requester.await("done"), count + ' ' + count + " 0");
    requester.finish();
    support::extend_watchdog();
  }
  replier.finish();
}

const char* const kNoMulticast = "dds.transport.rtps.multicast=0";
const char* const kPeer = "dds.transport.rtps.peers=10.77.0.1";
const char* const kShortMessages = "dds.transport.rtps.max_message_size=1500";

INSTANTIATE_TEST_SUITE_P(
    That, TwoHosts,
    ::testing::Values(Setting{"FindEachOtherByMulticast", {kInterface}, {kInterface}},
                      Setting{"KnowOneAddress", {kInterface, kNoMulticast}, {kInterface, kNoMulticast, kPeer}},
                      Setting{"LoseAFifthOfAllPackets", {kInterface}, {kInterface}, 20, 65535},
                      Setting{
                          "LoseAFifthOfShortPackets", {kInterface, kShortMessages}, {kInterface, kShortMessages}, 20}),
    [](const auto& test) { return std::string(test.param.name); });

class OneHost : public ProcessTest {
 protected:
  /// What becomes of a packet from a host to that port of the other.
  static std::string knock(const Host& host, int port) {
    Words command = host.prefix();
    command.insert(command.end(), {PROCESSES_PEER, "knock", "port=" + std::to_string(port)});
    return Child(command).await("knock");
  }
};

// Unless an interface is named, a process speaks to its own host alone.
TEST_F(OneHost, IsAllThereIsByDefault) {
  const Network network(0);
  SKIP_UNLESS_USABLE(network);
  std::vector<Child> repliers, requesters;
  for (const Host* host : {&network.a, &network.b}) {
    repliers.push_back(start("replier", {}, host->prefix()));
    requesters.push_back(start("requester", {"ahead=4"}, host->prefix()));
  }
  for (Child& requester : requesters) {
    requester.await("begun");
    until("calls are answered", [&] { return requester.ask_number("answered") > 100; });
  }
  EXPECT_EQ(network.a.sent("net"), 0);
  EXPECT_EQ(network.b.sent("net"), 0);
  const std::set<int> ports = network.a.udp_ports();
  EXPECT_FALSE(ports.empty());
  for (const int port : ports) {
    EXPECT_EQ(knock(network.b, port), "refused") << "port " << port << " is open to other hosts";
  }
  // They would find each other by now: others do.
  const std::string other_service = "service=" + service() + "_other";
  Child replier = start("replier", {other_service, kInterface}, network.a.prefix());
  Child requester = start("requester", {other_service, kInterface, "count=10"}, network.b.prefix());
  EXPECT_EQ(requester.await("done"), "10 10 0");
  EXPECT_GT(network.a.sent("net"), 0);
  bool open = false;
  for (const int port : network.a.udp_ports()) {
    open = open || (ports.count(port) == 0 && knock(network.b, port) == "open");
  }
  EXPECT_TRUE(open) << "what has been asked for is closed, too";
  for (std::vector<Child>* all : {&repliers, &requesters}) {
    for (Child& each : *all) { EXPECT_EQ(each.ask_number("others"), 1); }
  }
}

}  // namespace

}  // namespace processes
