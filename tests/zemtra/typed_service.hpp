#pragma once

#include <memory>
#include <ostream>
#include <string>

#include <zemtra/zemtra.hpp>

#include "end_to_end/transport.hpp"
#include "support/log_recorder.hpp"
#include "support/scale.hpp"
#include "support/thread.hpp"

namespace typed {

using namespace std::chrono_literals;
using support::scaled;
using support::Thread;

struct Question {
  int asker;
  int number;
};
struct Answer {
  int asker;
  int number;
  std::string text;
};

inline Answer answer(const Question& question, const std::string& text = "") {
  return {question.asker, question.number, text};
}

/// How long a test waits for what is to happen; the watchdog ends it before.
constexpr auto kLong = std::chrono::hours(1);

/// The two sides of the service "Calc" over the transport under test.
class TypedService : public ::testing::TestWithParam<end_to_end::Transport> {
 protected:
  using Requester = zemtra::Requester<Question, Answer>;
  using Replier = zemtra::Replier<Question, Answer>;
  using HandlerReplier = zemtra::HandlerReplier<Question, Answer>;

  TypedService() : requester_side_(std::make_unique<end_to_end::Side>(GetParam())) {
    if (GetParam().participant_per_side) { replier_side_ = std::make_unique<end_to_end::Side>(GetParam()); }
    expect_topics("Calc");
  }

  /// The topics that a service leaves behind.
  void expect_topics(const std::string& service) {
    for (const char* end : {"Request", "Reply"}) {
      requester_side_->expect_topic(service + end);
      if (replier_side_ != nullptr) { replier_side_->expect_topic(service + end); }
    }
  }

  DDSDomainParticipant* requester_participant() { return requester_side_->get(); }
  DDSDomainParticipant* replier_participant() {
    return replier_side_ == nullptr ? requester_side_->get() : replier_side_->get();
  }
  Requester make_requester() { return {requester_participant(), "Calc"}; }
  Replier make_replier() { return {replier_participant(), "Calc"}; }
  template <class... Arguments>
  HandlerReplier make_handler_replier(Arguments... arguments) {
    return {replier_participant(), "Calc", std::move(arguments)...};
  }

 private:
  std::unique_ptr<end_to_end::Side> requester_side_;
  std::unique_ptr<end_to_end::Side> replier_side_;
};

#define RUN_OVER_EVERY_TRANSPORT(suite)                                                  \
  INSTANTIATE_TEST_SUITE_P(Over, suite, ::testing::ValuesIn(::end_to_end::transports()), \
                           [](const auto& test) { return std::string(test.param.name); })

}  // namespace typed
