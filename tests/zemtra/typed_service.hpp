#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "end_to_end/side.hpp"
#include "ends.hpp"
#include "support/await.hpp"
#include "support/log_recorder.hpp"
#include "support/thread.hpp"

namespace typed {

using namespace std::chrono_literals;
using support::Thread;

/// The two sides of the service "Calc" over the carrier under test. The end that a test is about lives in this process.
class TypedService : public ::testing::TestWithParam<support::Carrier> {
 protected:
  using Requester = zemtra::Requester<Question, Answer>;
  using Replier = zemtra::Replier<Question, Answer>;
  using HandlerReplier = zemtra::HandlerReplier<Question, Answer>;

  TypedService() {
    if (GetParam().across_processes()) { other_process_ = start_other_end(support::own_domain()); }
    if (GetParam().ends == support::Carrier::participant_each) { other_side_ = make_side("Calc"); }
    side_ = make_side("Calc");
  }

  DDSDomainParticipant* participant() { return side_->get(); }
  DDSDomainParticipant* others_participant() { return (other_side_ == nullptr ? side_ : other_side_)->get(); }
  Requester make_requester() { return {participant(), "Calc"}; }
  Replier make_replier() { return {participant(), "Calc"}; }
  template <class... Arguments>
  HandlerReplier make_handler_replier(Arguments... arguments) {
    return {participant(), "Calc", std::move(arguments)...};
  }
  std::unique_ptr<OtherRequester> make_other_requester() {
    return other_process_ != nullptr ? create_requester(*other_process_) : create_requester(others_participant());
  }
  std::unique_ptr<OtherReplier> make_other_replier(const ReplierKind& kind = {}) {
    return other_process_ != nullptr ? create_replier(*other_process_, kind)
                                     : create_replier(others_participant(), kind);
  }
  static int scaled(int count) { return GetParam().scaled(count); }

  static std::unique_ptr<end_to_end::Side> make_side(const std::string& service) {
    auto side = std::make_unique<end_to_end::Side>(GetParam(), support::own_domain());
    side->expect_topics_of(service);
    return side;
  }
  /// A further service of this side.
  void expect_topics(const std::string& service) { side_->expect_topics_of(service); }

 private:
  std::unique_ptr<support::OtherProcess> other_process_;
  std::unique_ptr<end_to_end::Side> other_side_;
  std::unique_ptr<end_to_end::Side> side_;
};

#define RUN_OVER_EVERY_CARRIER(suite) \
  INSTANTIATE_TEST_SUITE_P(Over, suite, ::testing::ValuesIn(::support::carriers()), ::support::carrier_name)

}  // namespace typed
