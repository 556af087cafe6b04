#pragma once

#include <string>
#include <utility>
#include <vector>

#include <requestreply/requestreply.hpp>

#include "replier.hpp"
#include "side.hpp"
#include "support/dds_values.hpp"
#include "support/thread.hpp"
#include "text_types.hpp"

namespace end_to_end {

using support::milliseconds;
using support::Thread;
using Strings = std::vector<std::string>;

/// A front end to a requester, as thin as a typed one.
template <class Type>
class BasicRequester : public zemtra::details::RequesterUntypedImpl {
 public:
  explicit BasicRequester(const zemtra::RequesterParams& params)
      : RequesterUntypedImpl(params, &register_type<typename Type::TypeSupport>,
                             &register_type<typename Type::TypeSupport>, Type::sample_size, false) {}

  DDS_SampleIdentity_t send(const std::string& text) {
    DDS_WriteParams_t write_params;
    Type::with_sample(text, [&](const void* sample) { send_sample(sample, write_params); });
    return write_params.identity;
  }
  Strings take(const DDS_SampleIdentity_t& request) {
    void** data = nullptr;
    int count = 0;
    DDS_SampleInfoSeq infos;
    get_reply_loaned(&data, &count, infos, DDS_LENGTH_UNLIMITED, request, true);
    Strings result;
    for (int i = 0; i < count; ++i) {
      EXPECT_TRUE(infos[i].valid_data);
      result.push_back(Type::text(data[i]));
    }
    if (count > 0) { return_loan(data, infos); }
    return result;
  }
  /// Waits for as many replies as it takes, then takes all that are there.
  Strings await(const DDS_SampleIdentity_t& request, int min_count = 1) {
    EXPECT_TRUE(wait_for_replies(DDS_DURATION_INFINITE, min_count, request));
    return take(request);
  }
};
using Requester = BasicRequester<StringType>;

/// The two sides of the service "Calc" over the carrier under test.
class ServiceTest : public ::testing::TestWithParam<support::Carrier> {
 protected:
  ServiceTest() {
    if (GetParam().across_processes()) { replier_process_ = start_replier_process(support::own_domain()); }
    if (GetParam().ends == support::Carrier::participant_each) { replier_side_ = make_side(); }
    requester_side_ = make_side();
  }

  zemtra::RequesterParams requester_params() {
    return zemtra::RequesterParams(requester_side_->get()).service_name("Calc");
  }
  std::unique_ptr<Replier> make_replier(const ReplierKind& kind = {}) {
    if (replier_process_ != nullptr) { return create_replier(*replier_process_, kind); }
    return create_replier((replier_side_ == nullptr ? requester_side_ : replier_side_)->get(), kind);
  }
  static int scaled(int count) { return GetParam().scaled(count); }

 private:
  static std::unique_ptr<Side> make_side() {
    auto side = std::make_unique<Side>(GetParam(), support::own_domain());
    side->expect_topics_of("Calc");
    return side;
  }

  std::unique_ptr<support::OtherProcess> replier_process_;
  std::unique_ptr<Side> replier_side_;
  std::unique_ptr<Side> requester_side_;
};

#define RUN_OVER_EVERY_CARRIER(suite) \
  INSTANTIATE_TEST_SUITE_P(Over, suite, ::testing::ValuesIn(::support::carriers()), ::support::carrier_name)

}  // namespace end_to_end
