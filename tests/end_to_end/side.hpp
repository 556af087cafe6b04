#pragma once

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include <dds/dds.hpp>

#include "support/carrier.hpp"

namespace end_to_end {

/// A participant whose topics go with it, and which must hold nothing else by then.
class Side {
 public:
  Side(const support::Carrier& carrier, DDS_DomainId_t domain)
      : participant_(DDSDomainParticipantFactory::get_instance()->create_participant(
            domain, support::participant_qos(carrier), nullptr, DDS_STATUS_MASK_NONE)) {
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
  /// Topics to delete at the end, if they have come into being.
  void expect_topics_of(const std::string& service) {
    for (const char* end : {"Request", "Reply"}) { topics_.push_back(service + end); }
  }

 private:
  DDSDomainParticipant* participant_;
  std::vector<std::string> topics_;
};

}  // namespace end_to_end
