#pragma once

#include <gmock/gmock.h>
#include <dds/builtin_types.hpp>
#include <dds/domain_participant_factory.hpp>
#include <requestreply/requestreply.hpp>

#include <memory>
#include <string>
#include <vector>

#include "support/faulty_participant.hpp"
#include "support/log_recorder.hpp"

namespace requestreply_test {

using support::Call;
using support::Fault;
using support::Seam;
using zemtra::details::EntityParams;
using zemtra::details::EntityUntypedImpl;
using zemtra::details::ReplierUntypedImpl;
using zemtra::details::RequesterUntypedImpl;

constexpr DDS_Duration_t kShort{0, 1000000};
constexpr DDS_Duration_t kLong{60, 0};

/// A code with which a call may fail, and the class of the exception that reports it.
struct Failure {
  DDS_ReturnCode_t retcode;
  const std::type_info* exception;
};
const Failure kFailures[] = {{DDS_RETCODE_ERROR, &typeid(zemtra::RuntimeException)},
                             {DDS_RETCODE_UNSUPPORTED, &typeid(zemtra::UnsupportedException)},
                             {DDS_RETCODE_BAD_PARAMETER, &typeid(zemtra::BadParameterException)},
                             {DDS_RETCODE_PRECONDITION_NOT_MET, &typeid(zemtra::PreconditionNotMetException)},
                             {DDS_RETCODE_OUT_OF_RESOURCES, &typeid(zemtra::OutOfResourcesException)},
                             {DDS_RETCODE_NOT_ENABLED, &typeid(zemtra::NotEnabledException)},
                             {DDS_RETCODE_IMMUTABLE_POLICY, &typeid(zemtra::ImmutablePolicyException)},
                             {DDS_RETCODE_INCONSISTENT_POLICY, &typeid(zemtra::InconsistentPolicyException)},
                             {DDS_RETCODE_ALREADY_DELETED, &typeid(zemtra::AlreadyDeletedException)},
                             {DDS_RETCODE_ILLEGAL_OPERATION, &typeid(zemtra::IllegalOperationException)}};

const DDS_SequenceNumber_t kNumbersOfNoRequest[] = {DDS_AUTO_SEQUENCE_NUMBER, DDS::SEQUENCE_NUMBER_MAX,
                                                    DDS::SEQUENCE_NUMBER_ZERO, DDS::SEQUENCE_NUMBER_UNKNOWN};

/// What a typed front end for strings supplies.
const char* register_string(DDSTypeSupport* type_support, DDSDomainParticipant* participant);
constexpr int kSampleSize = sizeof(char*);

/// Parameters that tests fill as a builder for repliers would.
struct OpenParams : EntityParams {
  explicit OpenParams(DDSDomainParticipant* participant) : EntityParams(participant) {}
  using EntityParams::datareader_qos_;
  using EntityParams::datareader_type_support_;
  using EntityParams::datawriter_qos_;
  using EntityParams::datawriter_type_support_;
  using EntityParams::publisher_;
  using EntityParams::qos_library_name_;
  using EntityParams::qos_profile_name_;
  using EntityParams::reply_topic_name_;
  using EntityParams::request_topic_name_;
  using EntityParams::service_name_;
  using EntityParams::subscriber_;
};

/// An entity whose members tests can see.
template <class Base>
struct Open : Base {
  using Base::any_sample_condition;
  using Base::Base;
  using Base::finalized;
  using Base::max_samples_per_read;
  using Base::not_read_condition;
  using Base::owns_reader_cft;
  using Base::participant;
  using Base::publisher;
  using Base::reader;
  using Base::reader_topic;
  using Base::sample_flag;
  using Base::sample_size;
  using Base::subscriber;
  using Base::waitset;
  using Base::writer;
  using Base::writer_topic;
};

/// A loan that goes back to its entity.
class Loan {
 public:
  explicit Loan(EntityUntypedImpl& entity) : entity_(entity) {}
  ~Loan() { give_back(); }
  Loan(const Loan&) = delete;
  Loan& operator=(const Loan&) = delete;

  void give_back() {
    if (infos.length() > 0) { entity_.return_loan(data, infos); }
  }
  std::vector<std::string> texts() const;

  void** data = nullptr;
  int count = -1;
  DDS_SampleInfoSeq infos;

 private:
  EntityUntypedImpl& entity_;
};

/// A participant whose calls can be made to fail; at the end nothing but topics may be left in it.
class RequestReply : public ::testing::Test {
 protected:
  RequestReply();
  ~RequestReply() override;

  zemtra::RequesterParams requester_params();
  OpenParams replier_params();
  std::unique_ptr<Open<RequesterUntypedImpl>> make_requester();
  std::unique_ptr<Open<RequesterUntypedImpl>> make_requester(const zemtra::RequesterParams& params);
  std::unique_ptr<Open<ReplierUntypedImpl>> make_replier();
  std::unique_ptr<Open<ReplierUntypedImpl>> make_replier(const EntityParams& params);

  DDSTopic* make_topic(const std::string& name);
  DDSContentFilteredTopic* make_filtered_topic(const std::string& name, DDSTopic* topic);
  /// Deletes the topics and content-filtered topics, which no writer or reader may use any more; returns how many there
  /// were of the latter.
  int delete_topics();
  /// Deletes what a test has left in the participant on purpose.
  void delete_leftovers();

  static DDS_SampleIdentity_t send(EntityUntypedImpl& entity, const std::string& text);
  static void reply(ReplierUntypedImpl& replier, const DDS_SampleIdentity_t& request, const std::string& text);
  /// The texts of all samples that the entity holds, which are taken.
  static std::vector<std::string> take_all(EntityUntypedImpl& entity);
  /// The texts of all replies to the request, which are taken.
  static std::vector<std::string> take_replies(RequesterUntypedImpl& requester, const DDS_SampleIdentity_t& request);
  /// The sample states of all samples that the entity holds.
  static std::vector<DDS_SampleStateMask> sample_states(DDSDataReader& reader);
  /// The messages of the library's log lines.
  std::vector<std::string> logged() const;

  support::LogRecorder log_;
  DDSDomainParticipant* real_participant_;
  std::unique_ptr<support::FaultyParticipant> participant_;
};

/// The class of what `operation` throws, and its message.
template <class Operation>
std::pair<const std::type_info*, std::string> thrown_by(Operation operation) {
  try {
    operation();
  } catch (const std::exception& ex) { return {&typeid(ex), ex.what()}; }
  return {&typeid(void), "nothing thrown"};
}

/// The message of the exception that `operation` throws; fails the test when it is of another class.
template <class Exception, class Operation>
std::string message_of(Operation operation) {
  const auto [type, msg] = thrown_by(operation);
  EXPECT_EQ(*type, typeid(Exception)) << msg;
  return msg;
}

/// The message of an exception that a report with these arguments throws.
std::string report(const std::string& context, const QVXLogMessage& log_template, const std::string& msg);

MATCHER_P3(FailureLine, unit, context, text, "") {
  return arg.level == 2 && arg.file.rfind(unit, 0) == 0 && arg.line > 0 && arg.context == context && arg.text == text;
}

}  // namespace requestreply_test
