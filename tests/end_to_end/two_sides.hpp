#pragma once

#include <memory>
#include <string>

#include "remote.hpp"

namespace end_to_end {

/// The two sides of the service "Calc" over the carrier under test. The end that a test is about lives in this process.
class TwoSides : public ::testing::TestWithParam<support::Carrier> {
 protected:
  TwoSides() {
    if (GetParam().across_processes()) { other_process_ = start_other_side(); }
    if (GetParam().ends == support::Carrier::participant_each) { other_side_ = make_side("Calc"); }
    side_ = make_side("Calc");
  }

  DDSDomainParticipant* participant() { return side_->get(); }
  DDSDomainParticipant* others_participant() { return (other_side_ == nullptr ? side_ : other_side_)->get(); }
  /// Creates something where the other end lives, which is a process or a participant of this one.
  template <class Create>
  auto make_other(Create create) {
    return other_process_ != nullptr ? create(*other_process_) : create(others_participant());
  }
  static int scaled(int count) { return GetParam().scaled(count); }

  static std::unique_ptr<Side> make_side(const std::string& service) {
    auto side = std::make_unique<Side>(GetParam(), support::own_domain());
    side->expect_topics_of(service);
    return side;
  }
  /// A further service of this side.
  void expect_topics(const std::string& service) { side_->expect_topics_of(service); }

 private:
  std::unique_ptr<OtherProcess> other_process_;
  std::unique_ptr<Side> other_side_;
  std::unique_ptr<Side> side_;
};

#define RUN_OVER_EVERY_CARRIER(suite) \
  INSTANTIATE_TEST_SUITE_P(Over, suite, ::testing::ValuesIn(::support::carriers()), ::support::carrier_name)

}  // namespace end_to_end
