#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <dds/dds.hpp>

namespace end_to_end {

/// Where the two sides of a service live. The suite runs over every one of them; a transport is a line in
/// `transports()`.
struct Transport {
  const char* name;
  const char* property;       // the value of "dds.transport"
  bool participant_per_side;  // or one participant for both sides
};
inline std::ostream& operator<<(std::ostream& out, const Transport& transport) { return out << transport.name; }

inline std::vector<Transport> transports() {
  return {{"InProcessOneParticipant", "in_process", false}, {"InProcessParticipantPerSide", "in_process", true}};
}

/// A participant whose topics go with it, and which must hold nothing else by then.
class Side {
 public:
  explicit Side(const Transport& transport) {
    DDS_DomainParticipantQos qos;
    EXPECT_EQ(DDSPropertyQosPolicyHelper::add_property(qos.property, "dds.transport", transport.property, false),
              DDS_RETCODE_OK);
    participant_ = DDSDomainParticipantFactory::get_instance()->create_participant(0, qos, nullptr, 0);
    if (participant_ == nullptr) { throw std::runtime_error("no participant"); }
  }
  ~Side() {
    for (const std::string& name : topics_) {
      DDSTopic* topic = DDSTopic::narrow(participant_->lookup_topicdescription(name.c_str()));
      if (topic != nullptr) { EXPECT_EQ(participant_->delete_topic(topic), DDS_RETCODE_OK) << name; }
    }
    EXPECT_EQ(DDSDomainParticipantFactory::get_instance()->delete_participant(participant_), DDS_RETCODE_OK)
        << "an entity is left";
  }
  Side(const Side&) = delete;
  Side& operator=(const Side&) = delete;

  DDSDomainParticipant* get() const { return participant_; }
  /// A topic to delete at the end, if it has come into being.
  void expect_topic(const std::string& name) { topics_.push_back(name); }

 private:
  DDSDomainParticipant* participant_;
  std::vector<std::string> topics_;
};

}  // namespace end_to_end
