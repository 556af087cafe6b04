#pragma once

#include "dds_behaviour/behaviour.hpp"

namespace regressions {

using namespace behaviour;

inline DDS_DataReaderQos reliable_reader_qos() { return keep_all_reader(); }

/// A participant with a topic of strings and one of keyed strings.
struct Topics {
  Participant participant;
  DDSTopic* strings = participant.strings("strings");
  DDSTopic* keyed_strings = participant.keyed_strings("keyed strings");
};

class TopicsOverCarrier : public OverCarrier<>, public ::testing::Test, protected Topics {};

}  // namespace regressions
