// What the properties of a participant make of the transport.

#include "rtps/properties.hpp"

#include <gtest/gtest.h>

namespace dds::rtps {
namespace {

using Settings = std::vector<std::pair<const char*, const char*>>;

bool read(const Settings& settings, EngineConfig& config, std::string& error, DDS_DomainId_t domain = 0) {
  DDS_PropertyQosPolicy policy;
  for (const auto& [name, value] : settings) {
    EXPECT_EQ(DDSPropertyQosPolicyHelper::add_property(policy, name, value, false), DDS_RETCODE_OK);
  }
  return read_properties(domain, policy, config, error);
}

TEST(RtpsProperties, ByDefaultNothingLeavesTheHost) {
  EngineConfig config;
  std::string error;
  ASSERT_TRUE(read({{"dds.transport", "rtps"}, {"somebody.else", "x"}}, config, error, 230));
  EXPECT_EQ(config.interface_name, "");
  EXPECT_EQ(config.domain, 230u);
  EXPECT_TRUE(config.peers.empty());
  EXPECT_TRUE(config.security.empty());
  EXPECT_EQ(config.lease_milliseconds, 2000);
}

TEST(RtpsProperties, AreReadOneByOne) {
  EngineConfig config;
  std::string error;
  ASSERT_TRUE(read({{"dds.transport.rtps.interface", "eth0"},
                    {"dds.transport.rtps.peers", "10.0.0.1,10.0.0.2"},
                    {"dds.transport.rtps.multicast", "0"},
                    {"dds.transport.rtps.lease_milliseconds", "300"},
                    {"dds.transport.rtps.max_message_size", "1500"},
                    {"dds.transport.rtps.receive_buffer_size", "65536"},
                    {"dds.transport.rtps.send_buffer_size", "131072"},
                    {"dds.sec.auth.library.path", "x"}},
                   config, error));
  EXPECT_EQ(config.interface_name, "eth0");
  EXPECT_EQ(config.peers, (std::vector<std::string>{"10.0.0.1", "10.0.0.2"}));
  EXPECT_FALSE(config.multicast);
  EXPECT_EQ(config.lease_milliseconds, 300);
  EXPECT_EQ(config.max_message_size, 1500u);
  EXPECT_EQ(config.receive_buffer_size, 65536u);
  EXPECT_EQ(config.send_buffer_size, 131072u);
  EXPECT_EQ(config.security, (decltype(config.security){{"dds.sec.auth.library.path", "x"}}));
}

TEST(RtpsProperties, WhatMeansNothingIsRefusedByName) {
  const Settings refused = {{"dds.transport.rtps.interfaces", "eth0"},
                            {"dds.transport.udp", "1"},
                            {"dds.transport.rtps.interface", ""},
                            {"dds.transport.rtps.peers", "a,,b"},
                            {"dds.transport.rtps.peers", "a, b"},
                            {"dds.transport.rtps.multicast", "yes"},
                            {"dds.transport.rtps.lease_milliseconds", "99"},
                            {"dds.transport.rtps.lease_milliseconds", "1s"},
                            {"dds.transport.rtps.max_message_size", "70000"},
                            {"dds.transport.rtps.send_buffer_size", "-1"}};
  for (const auto& setting : refused) {
    EngineConfig config;
    std::string error;
    EXPECT_FALSE(read({setting}, config, error)) << setting.first << " " << setting.second;
    EXPECT_NE(error.find(setting.first), std::string::npos) << error;
  }
  {
    EngineConfig config;
    std::string error;
    EXPECT_FALSE(read({refused[6]}, config, error));
    EXPECT_EQ(error, "property \"dds.transport.rtps.lease_milliseconds\" = \"99\": 100 to 3600000");
  }
  EngineConfig config;
  std::string error;
  EXPECT_FALSE(read({}, config, error, 231));
  EXPECT_EQ(error, "domain 231 is above 230");
}

}  // namespace
}  // namespace dds::rtps
