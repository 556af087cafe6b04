#include "requestreply/fixture.hpp"

// Every call that creation and deletion make is failed, with every code that it may return.

namespace requestreply_test {
namespace {

using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr const char* kEntity = "zemtra::details::EntityUntypedImpl";
const DDS_ReturnCode_t kFailures[] = {DDS_RETCODE_ERROR,
                                      DDS_RETCODE_UNSUPPORTED,
                                      DDS_RETCODE_BAD_PARAMETER,
                                      DDS_RETCODE_PRECONDITION_NOT_MET,
                                      DDS_RETCODE_OUT_OF_RESOURCES,
                                      DDS_RETCODE_NOT_ENABLED,
                                      DDS_RETCODE_IMMUTABLE_POLICY,
                                      DDS_RETCODE_INCONSISTENT_POLICY,
                                      DDS_RETCODE_ALREADY_DELETED,
                                      DDS_RETCODE_ILLEGAL_OPERATION};
const DDS_ReturnCode_t kNothingThere[] = {DDS_RETCODE_TIMEOUT, DDS_RETCODE_NO_DATA};

const std::type_info& exception_of(DDS_ReturnCode_t retcode) {
  switch (retcode) {
    case DDS_RETCODE_UNSUPPORTED:
      return typeid(zemtra::UnsupportedException);
    case DDS_RETCODE_BAD_PARAMETER:
      return typeid(zemtra::BadParameterException);
    case DDS_RETCODE_PRECONDITION_NOT_MET:
      return typeid(zemtra::PreconditionNotMetException);
    case DDS_RETCODE_OUT_OF_RESOURCES:
      return typeid(zemtra::OutOfResourcesException);
    case DDS_RETCODE_NOT_ENABLED:
      return typeid(zemtra::NotEnabledException);
    case DDS_RETCODE_IMMUTABLE_POLICY:
      return typeid(zemtra::ImmutablePolicyException);
    case DDS_RETCODE_INCONSISTENT_POLICY:
      return typeid(zemtra::InconsistentPolicyException);
    case DDS_RETCODE_ALREADY_DELETED:
      return typeid(zemtra::AlreadyDeletedException);
    case DDS_RETCODE_ILLEGAL_OPERATION:
      return typeid(zemtra::IllegalOperationException);
    default:
      return typeid(zemtra::RuntimeException);
  }
}

/// A call whose failure makes creation fail.
struct CreationFault {
  Call call;
  int occurrence;
  const char* context;
  const QVXLogMessage* log_template;
  const char* msg;
  const char* topics = "";    ///< what stands behind the class name in the entity's context
  bool keeps_filter = false;  ///< the reader was never created, so a requester's content-filtered topic stays
  bool in_initialize = true;
};

enum class Source { defaults, caller, profile };

class CreationFaults : public RequestReply {
 protected:
  CreationFaults() {
    DDSDomainParticipantFactory* factory = DDSDomainParticipantFactory::get_instance();
    EXPECT_EQ(factory->set_profile_datawriter_qos("L", "P", nullptr, writer_qos_), DDS_RETCODE_OK);
    EXPECT_EQ(factory->set_profile_datareader_qos("L", "P", nullptr, reader_qos_), DDS_RETCODE_OK);
  }
  ~CreationFaults() override { DDSDomainParticipantFactory::get_instance()->clear_profiles(); }

  void create_requester(Source source) {
    zemtra::RequesterParams params = requester_params();
    if (source == Source::caller) { params.datawriter_qos(writer_qos_).datareader_qos(reader_qos_); }
    if (source == Source::profile) { params.qos_profile("L", "P"); }
    make_requester(params);
  }

  /// Has the call fail while `create` runs, and checks what is thrown and logged and what is left.
  template <class Create>
  void expect_failure(const CreationFault& fault, DDS_ReturnCode_t retcode, const std::type_info& exception,
                      Create create) {
    SCOPED_TRACE(std::string(support::name_of(fault.call)) + " " + std::to_string(fault.occurrence) + ", code " +
                 std::to_string(retcode));
    Seam::get().reset();
    log_.clear();
    Seam::get().plan({fault.call, fault.occurrence, retcode});
    const std::string cause = report(fault.context, *fault.log_template, fault.msg);
    const std::string context = std::string(kEntity) + fault.topics + "::initialize";
    try {
      create();
      ADD_FAILURE() << "no exception";
    } catch (const std::exception& ex) {
      EXPECT_EQ(typeid(ex), exception);
      EXPECT_EQ(ex.what(), fault.in_initialize ? context + " failure caused by " + cause : cause);
    }
    EXPECT_TRUE(Seam::get().all_happened());
    std::vector<::testing::Matcher<support::LogLine>> lines = {
        FailureLine("requestreply/Exception", fault.context, support::filled(*fault.log_template, fault.msg))};
    if (fault.in_initialize) {
      lines.push_back(FailureLine("requestreply/UntypedCommon", context,
                                  support::filled(QVX_LOG_ANY_FAILURE_s, "failed (see previous errors)")));
    }
    EXPECT_THAT(log_.lines(), ElementsAreArray(lines));
    EXPECT_EQ(delete_topics(), fault.keeps_filter ? 1 : 0);
  }

  /// Has the call report a failure that nobody may notice while `create` runs.
  template <class Create>
  void expect_success(Call call, DDS_ReturnCode_t retcode, Create create) {
    SCOPED_TRACE(std::string(support::name_of(call)) + ", code " + std::to_string(retcode));
    Seam::get().reset();
    log_.clear();
    Seam::get().plan({call, 1, retcode});
    EXPECT_NO_THROW(create());
    EXPECT_TRUE(Seam::get().all_happened());
    EXPECT_EQ(delete_topics(), 0);
  }

  const DDS_DataWriterQos writer_qos_;
  const DDS_DataReaderQos reader_qos_;
};

TEST_F(CreationFaults, OfARequesterAreReportedAndUndoneWhereAFactoryReturnsNull) {
  const CreationFault faults[] = {
      {Call::create_topic, 1, "zemtra::details::get_or_create_topic", &QVX_LOG_CREATION_FAILURE_s, "topic CalcRequest"},
      {Call::duplicate_string, 1, "EntityUntypedImpl::get_datawriter_qos", &QVX_LOG_ANY_FAILURE_s, "allocate string"},
      {Call::create_datawriter, 1, "initialize", &QVX_LOG_CREATION_FAILURE_s, "DataWriter"},
      {Call::create_topic, 2, "zemtra::details::get_or_create_topic", &QVX_LOG_CREATION_FAILURE_s, "topic CalcReply"},
      {Call::create_contentfilteredtopic, 1, "CorrelationCFTBuilder::create_correlation_cft", &QVX_LOG_CREATE_s,
       "content-filtered topic for topic CalcReply"},
      {Call::duplicate_string, 2, "EntityUntypedImpl::get_datareader_qos", &QVX_LOG_ANY_FAILURE_s, "allocate string",
       "", true},
      {Call::create_datareader, 1, "initialize", &QVX_LOG_CREATION_FAILURE_s, "DataReader", "", true},
      {Call::create_readcondition, 1, "initialize", &QVX_LOG_CREATION_FAILURE_s, "any-sample read condition",
       "(CalcRequest, CalcReply)"},
      {Call::create_readcondition, 2, "initialize", &QVX_LOG_CREATION_FAILURE_s, "not-read-sample read condition",
       "(CalcRequest, CalcReply)"},
  };
  for (const CreationFault& fault : faults) {
    expect_failure(fault, DDS_RETCODE_ERROR, typeid(zemtra::RuntimeException), [this] { make_requester(); });
  }
}

TEST_F(CreationFaults, OfAReplierAreReportedAndUndoneWhereAFactoryReturnsNull) {
  const CreationFault faults[] = {
      {Call::create_topic, 1, "zemtra::details::get_or_create_topic", &QVX_LOG_CREATION_FAILURE_s, "topic CalcReply"},
      {Call::duplicate_string, 1, "EntityUntypedImpl::get_datawriter_qos", &QVX_LOG_ANY_FAILURE_s, "allocate string"},
      {Call::create_datawriter, 1, "initialize", &QVX_LOG_CREATION_FAILURE_s, "DataWriter"},
      {Call::create_topic, 2, "zemtra::details::get_or_create_topic", &QVX_LOG_CREATION_FAILURE_s, "topic CalcRequest"},
      {Call::duplicate_string, 2, "EntityUntypedImpl::get_datareader_qos", &QVX_LOG_ANY_FAILURE_s, "allocate string"},
      {Call::create_datareader, 1, "initialize", &QVX_LOG_CREATION_FAILURE_s, "DataReader"},
      {Call::create_readcondition, 1, "initialize", &QVX_LOG_CREATION_FAILURE_s, "any-sample read condition",
       "(CalcReply, CalcRequest)"},
      {Call::create_readcondition, 2, "initialize", &QVX_LOG_CREATION_FAILURE_s, "not-read-sample read condition",
       "(CalcReply, CalcRequest)"},
  };
  for (const CreationFault& fault : faults) {
    expect_failure(fault, DDS_RETCODE_ERROR, typeid(zemtra::RuntimeException), [this] { make_replier(); });
  }
}

TEST_F(CreationFaults, AreReportedWithTheClassOfTheCodeThatTheMiddlewareReturns) {
  const char* writer = "EntityUntypedImpl::get_datawriter_qos";
  const char* reader = "EntityUntypedImpl::get_datareader_qos";
  const std::pair<CreationFault, Source> faults[] = {
      {{Call::get_default_datawriter_qos, 1, writer, &QVX_LOG_GET_FAILURE_s, "DataWriter qos"}, Source::defaults},
      {{Call::copy_datawriter_qos, 1, writer, &QVX_LOG_GET_FAILURE_s, "DataWriter qos"}, Source::caller},
      {{Call::get_profile_datawriter_qos, 1, writer, &QVX_LOG_GET_FAILURE_s, "DataWriter qos"}, Source::profile},
      {{Call::get_default_datareader_qos, 1, reader, &QVX_LOG_GET_FAILURE_s, "DataReader qos", "", true},
       Source::defaults},
      {{Call::copy_datareader_qos, 1, reader, &QVX_LOG_GET_FAILURE_s, "DataReader qos", "", true}, Source::caller},
      {{Call::get_profile_datareader_qos, 1, reader, &QVX_LOG_GET_FAILURE_s, "DataReader qos", "", true},
       Source::profile},
      {{Call::add_property, 1, reader, &QVX_LOG_ANY_FAILURE_s, "set DataReader qos property", "", true},
       Source::defaults},
      {{Call::create_index, 1, "RequesterUntypedImpl", &QVX_LOG_CREATION_FAILURE_s, "correlation index", "", false,
        false},
       Source::defaults},
  };
  for (const auto& [fault, source] : faults) {
    const Source from = source;
    for (const DDS_ReturnCode_t retcode : kFailures) {
      expect_failure(fault, retcode, exception_of(retcode), [this, from] { create_requester(from); });
    }
    for (const DDS_ReturnCode_t retcode : kNothingThere) {
      expect_success(fault.call, retcode, [this, from] { create_requester(from); });
    }
  }
}

TEST_F(CreationFaults, OfTheWaitSetAndTheWritersQosAreNotLookedAt) {
  for (const Call call : {Call::attach_condition, Call::get_writer_qos}) {
    for (const DDS_ReturnCode_t retcode : kFailures) {
      expect_success(call, retcode, [this] { make_requester(); });
    }
  }
}

TEST_F(CreationFaults, OfThePoolOfWaitSetsAreExhaustedMemory) {
  Seam::get().plan({Call::create_pool});
  EXPECT_THROW(make_requester(), std::bad_alloc);
  EXPECT_THAT(log_.lines(), IsEmpty());
  EXPECT_EQ(delete_topics(), 0);
}

TEST_F(CreationFaults, OfThePublisherAndSubscriberAreReportedLikeTheParticipants) {
  DDSPublisher* publisher = participant_->create_publisher(DDS_PUBLISHER_QOS_DEFAULT, nullptr, 0);
  DDSSubscriber* subscriber = participant_->create_subscriber(DDS_SUBSCRIBER_QOS_DEFAULT, nullptr, 0);
  const zemtra::RequesterParams params = requester_params().publisher(publisher).subscriber(subscriber);
  const CreationFault faults[] = {
      {Call::create_datawriter, 1, "initialize", &QVX_LOG_CREATION_FAILURE_s, "DataWriter"},
      {Call::create_datareader, 1, "initialize", &QVX_LOG_CREATION_FAILURE_s, "DataReader", "", true}};
  for (const CreationFault& fault : faults) {
    expect_failure(fault, DDS_RETCODE_ERROR, typeid(zemtra::RuntimeException), [&] { make_requester(params); });
  }
  EXPECT_EQ(participant_->delete_publisher(publisher), DDS_RETCODE_OK);
  EXPECT_EQ(participant_->delete_subscriber(subscriber), DDS_RETCODE_OK);
}

TEST_F(CreationFaults, ThatAreNotTheLibrarysOwnPassUnchangedAndAreUndone) {
  const std::pair<Call, int> calls[] = {{Call::create_topic, 1},
                                        {Call::get_default_datawriter_qos, 1},
                                        {Call::duplicate_string, 1},
                                        {Call::create_datawriter, 1},
                                        {Call::create_topic, 2},
                                        {Call::get_writer_qos, 1},
                                        {Call::create_contentfilteredtopic, 1},
                                        {Call::get_default_datareader_qos, 1},
                                        {Call::duplicate_string, 2},
                                        {Call::add_property, 1},
                                        {Call::create_datareader, 1},
                                        {Call::create_readcondition, 1},
                                        {Call::create_readcondition, 2},
                                        {Call::attach_condition, 1},
                                        {Call::create_index, 1},
                                        {Call::create_pool, 1}};
  for (const auto& [call, occurrence] : calls) {
    SCOPED_TRACE(std::string(support::name_of(call)) + " " + std::to_string(occurrence));
    Seam::get().reset();
    Seam::get().plan({call, occurrence, DDS_RETCODE_OK, true});
    EXPECT_THROW(make_requester(), std::bad_alloc);
    const bool filter_without_reader = Seam::get().count(Call::create_readcondition) == 0;
    EXPECT_LE(delete_topics(), filter_without_reader ? 1 : 0);
    // A condition that was never attached cannot be detached, which is all that may be noticed.
    EXPECT_EQ(log_.lines().size(), call == Call::attach_condition ? 1u : 0u);
    log_.clear();
  }
}

/// A call whose failure deletion logs, and what follows from it.
struct DeletionFault {
  Call call;
  int occurrence;
  std::vector<std::string> logged;
};

class DeletionFaults : public RequestReply {
 protected:
  static std::string not_removed() { return support::filled(QVX_LOG_REMOVE_FAILURE_s, "condition"); }
  static std::string not_deleted(const std::string& what) {
    return support::filled(QVX_LOG_DESTRUCTION_FAILURE_s, what);
  }

  template <class Make>
  void expect_logged(const DeletionFault& fault, Make make) {
    for (int retcode = DDS_RETCODE_ERROR; retcode <= DDS_RETCODE_ILLEGAL_OPERATION; ++retcode) {
      SCOPED_TRACE(std::string(support::name_of(fault.call)) + " " + std::to_string(fault.occurrence) + ", code " +
                   std::to_string(retcode));
      auto entity = make();
      Seam::get().reset();
      log_.clear();
      Seam::get().plan({fault.call, fault.occurrence, static_cast<DDS_ReturnCode_t>(retcode)});
      EXPECT_NO_THROW(entity->finalize());
      EXPECT_TRUE(Seam::get().all_happened());
      EXPECT_EQ(Seam::get().count(Call::delete_datawriter), 1) << "one failure does not stop the rest";
      EXPECT_EQ(entity->reader, nullptr);
      EXPECT_EQ(entity->writer, nullptr);
      EXPECT_EQ(entity->not_read_condition, nullptr);
      EXPECT_EQ(entity->any_sample_condition, nullptr);
      EXPECT_THAT(logged(), ElementsAreArray(fault.logged));
      for (const support::LogLine& line : log_.lines()) {
        EXPECT_THAT(line, FailureLine("requestreply/UntypedCommon", "finalize", line.text));
      }
      delete_leftovers();
    }
  }
};

TEST_F(DeletionFaults, OfARequesterAreLoggedAndTheRestIsDeletedAllTheSame) {
  const DeletionFault faults[] = {
      {Call::detach_condition, 1, {not_removed()}},
      {Call::delete_readcondition,
       1,
       {not_deleted("read condition (1)"), not_deleted("reader"), not_deleted("content-filtered topic")}},
      {Call::delete_readcondition,
       2,
       {not_deleted("read condition (2)"), not_deleted("reader"), not_deleted("content-filtered topic")}},
      {Call::get_reader_topicdescription, 1, {not_deleted("content-filtered topic")}},
      {Call::delete_datareader, 1, {not_deleted("reader"), not_deleted("content-filtered topic")}},
      {Call::delete_contentfilteredtopic, 1, {not_deleted("content-filtered topic")}},
      {Call::delete_datawriter, 1, {not_deleted("writer")}},
  };
  for (const DeletionFault& fault : faults) {
    expect_logged(fault, [this] { return make_requester(); });
  }
}

TEST_F(DeletionFaults, OfAReplierAreLoggedAndTheRestIsDeletedAllTheSame) {
  const DeletionFault faults[] = {
      {Call::detach_condition, 1, {not_removed()}},
      {Call::delete_readcondition, 1, {not_deleted("read condition (1)"), not_deleted("reader")}},
      {Call::delete_readcondition, 2, {not_deleted("read condition (2)"), not_deleted("reader")}},
      {Call::get_reader_topicdescription, 1, {}},
      {Call::delete_datareader, 1, {not_deleted("reader")}},
      {Call::delete_datawriter, 1, {not_deleted("writer")}},
  };
  for (const DeletionFault& fault : faults) {
    expect_logged(fault, [this] { return make_replier(); });
  }
}

TEST_F(DeletionFaults, AreNotLoggedWhenAMaskForbidsIt) {
  auto replier = make_replier();
  Seam::get().plan({Call::delete_datawriter});
  DDSLog_g_submoduleMask &= ~0x10u;
  replier.reset();
  EXPECT_THAT(log_.lines(), IsEmpty());
  delete_leftovers();
}

}  // namespace
}  // namespace requestreply_test
