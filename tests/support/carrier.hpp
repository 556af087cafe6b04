#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include <dds/dds.hpp>

#include "support/scale.hpp"

namespace support {

/// Where the two ends of a test live, and what carries the samples between them.
struct Carrier {
  const char* name;
  const char* transport;  // the participant property "dds.transport"
  enum Ends { one_participant, participant_each, process_each } ends;

  bool in_process() const { return std::string(transport) == "in_process"; }
  bool across_processes() const { return ends == process_each; }
  /// Repetitions that take about as long over this carrier as `count` do in a plain build within a process, if there
  /// are many of them.
  int scaled(int count) const { return support::scaled(in_process() ? count : (count + 9) / 10); }
};
inline std::ostream& operator<<(std::ostream& out, const Carrier& carrier) { return out << carrier.name; }

constexpr Carrier kAcrossProcesses{"AcrossProcesses", "rtps", Carrier::process_each};

/// Every one that tests of behaviour between two ends run over.
std::vector<Carrier> carriers();
/// Those without another process, for what needs both ends here.
std::vector<Carrier> carriers_of_one_process();

/// The name of a test over a carrier, for `INSTANTIATE_TEST_SUITE_P`.
inline std::string carrier_name(const ::testing::TestParamInfo<Carrier>& test) { return test.param.name; }

/// The QoS of a participant that uses the carrier.
DDS_DomainParticipantQos participant_qos(const Carrier& carrier);

/// Two domains that no other test program on this machine uses as long as this one runs.
DDS_DomainId_t own_domain();
DDS_DomainId_t own_second_domain();

}  // namespace support
