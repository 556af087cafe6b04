#pragma once

#include <string>
#include <utility>
#include <vector>

#include <requestreply/requestreply.hpp>

#include "support/dds_values.hpp"
#include "support/scale.hpp"
#include "support/thread.hpp"
#include "transport.hpp"

namespace end_to_end {

using support::milliseconds;
using support::scaled;
using support::Thread;
using Strings = std::vector<std::string>;

template <class TypeSupport>
const char* register_type(DDSTypeSupport* /*type_support*/, DDSDomainParticipant* participant) {
  EXPECT_EQ(TypeSupport::register_type(participant, nullptr), DDS_RETCODE_OK);
  return TypeSupport::get_type_name();
}

/// The string and the octets type under one roof: how a text becomes a sample and a sample a text.
struct StringType {
  using TypeSupport = DDSStringTypeSupport;
  static constexpr int sample_size = sizeof(char*);
  template <class Send>
  static void with_sample(const std::string& text, Send send) {
    const char* sample = text.c_str();
    send(&sample);
  }
  static std::string text(const void* sample) { return *static_cast<char* const*>(sample); }
};
struct OctetsType {
  using TypeSupport = DDSOctetsTypeSupport;
  static constexpr int sample_size = sizeof(DDS_Octets);
  template <class Send>
  static void with_sample(std::string text, Send send) {
    const DDS_Octets sample{static_cast<DDS_Long>(text.size()), reinterpret_cast<DDS_Octet*>(text.data())};
    send(&sample);
  }
  static std::string text(const void* sample) {
    const auto& octets = *static_cast<const DDS_Octets*>(sample);
    return std::string(octets.value, octets.value + octets.length);
  }
};

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

struct Request {
  std::string text;
  DDS_SampleIdentity_t identity;
};

template <class Type>
class BasicReplier : public zemtra::details::ReplierUntypedImpl {
 public:
  explicit BasicReplier(const zemtra::details::EntityParams& params, DDSDataReaderListener* listener = nullptr) {
    initialize(params, &register_type<typename Type::TypeSupport>, &register_type<typename Type::TypeSupport>,
               Type::sample_size, listener, false);
  }

  /// Takes up to `max_count` requests, once `min_count` are there.
  std::vector<Request> receive(int max_count = DDS_LENGTH_UNLIMITED, int min_count = 1,
                               DDS_Duration_t max_wait = DDS_DURATION_INFINITE) {
    void** data = nullptr;
    int count = 0;
    DDS_SampleInfoSeq infos;
    std::vector<Request> requests;
    if (!receive_sample_loaned(&data, &count, infos, max_count, max_wait, min_count)) { return requests; }
    for (int i = 0; i < count; ++i) {
      if (infos[i].valid_data) {
        requests.push_back({Type::text(data[i]), zemtra::details::get_sample_identity_from_sample_info(infos[i])});
      }
    }
    return_loan(data, infos);
    return requests;
  }
  void reply(const DDS_SampleIdentity_t& request, const std::string& text) {
    DDS_WriteParams_t write_params;
    Type::with_sample(text, [&](const void* sample) { send_sample(sample, request, write_params); });
  }
  /// Answers `count` requests, each with its own text after `prefix`.
  void echo(int count, const std::string& prefix = "re: ") {
    while (count > 0) {
      for (const Request& request : receive()) {
        reply(request.identity, prefix + request.text);
        --count;
      }
    }
  }
};

using Requester = BasicRequester<StringType>;
using Replier = BasicReplier<StringType>;

/// Waits until a writer has met exactly `count` readers or a reader `count` writers.
template <class Entity, class Status>
void await_matches(Entity* entity, DDS_ReturnCode_t (Entity::*get_status)(Status&), DDS_StatusMask mask, int count) {
  DDSWaitSet waitset;
  ASSERT_EQ(entity->get_statuscondition()->set_enabled_statuses(mask), DDS_RETCODE_OK);
  ASSERT_EQ(waitset.attach_condition(entity->get_statuscondition()), DDS_RETCODE_OK);
  for (;;) {
    Status status;
    ASSERT_EQ((entity->*get_status)(status), DDS_RETCODE_OK);
    if (status.current_count == count) { return; }
    DDSConditionSeq active;
    ASSERT_EQ(waitset.wait(active, DDS_DURATION_INFINITE), DDS_RETCODE_OK);
  }
}
/// Waits until an entity's writer and reader have met `count` of the other side.
inline void await_others(const zemtra::details::EntityUntypedImpl& entity, int count) {
  await_matches(entity.get_datawriter(), &DDSDataWriter::get_publication_matched_status, DDS_PUBLICATION_MATCHED_STATUS,
                count);
  await_matches(entity.get_datareader(), &DDSDataReader::get_subscription_matched_status,
                DDS_SUBSCRIPTION_MATCHED_STATUS, count);
}

/// The two sides of the service "Calc" over the transport under test.
class ServiceTest : public ::testing::TestWithParam<Transport> {
 protected:
  ServiceTest() {
    requester_side = std::make_unique<Side>(GetParam());
    if (GetParam().participant_per_side) { separate_replier_side_ = std::make_unique<Side>(GetParam()); }
    for (const char* name : {"CalcRequest", "CalcReply"}) {
      requester_side->expect_topic(name);
      replier_side().expect_topic(name);
    }
  }

  Side& replier_side() { return separate_replier_side_ == nullptr ? *requester_side : *separate_replier_side_; }
  zemtra::RequesterParams requester_params() {
    return zemtra::RequesterParams(requester_side->get()).service_name("Calc");
  }
  // The builder serves both roles here: its two setters that know a role, the type supports, are not needed.
  zemtra::RequesterParams replier_params() {
    return zemtra::RequesterParams(replier_side().get()).service_name("Calc");
  }

  std::unique_ptr<Side> requester_side;

 private:
  std::unique_ptr<Side> separate_replier_side_;
};

#define RUN_OVER_EVERY_TRANSPORT(suite)                                                  \
  INSTANTIATE_TEST_SUITE_P(Over, suite, ::testing::ValuesIn(::end_to_end::transports()), \
                           [](const auto& test) { return std::string(test.param.name); })

}  // namespace end_to_end
