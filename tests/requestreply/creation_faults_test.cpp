#include "requestreply/fixture.hpp"

// Every call that creation and deletion make is failed, with every code that it may return.

namespace requestreply_test {
namespace {

using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr const char* kEntity = "zemtra::details::EntityUntypedImpl";
const DDS_ReturnCode_t kNothingThere[] = {DDS_RETCODE_TIMEOUT, DDS_RETCODE_NO_DATA};

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
  void expect_failure(const CreationFault& fault, DDS_ReturnCode_t retcode, const std::type_info& exception,
                      const std::function<void()>& create) {
    SCOPED_TRACE(std::string(support::name_of(fault.call)) + " " + std::to_string(fault.occurrence) + ", code " +
                 std::to_string(retcode));
    Seam::get().reset();
    log_.clear();
    Seam::get().plan({fault.call, fault.occurrence, retcode});
    const std::string cause = report(fault.context, *fault.log_template, fault.msg);
    const std::string context = std::string(kEntity) + fault.topics + "::initialize";
    const auto [type, msg] = thrown_by(create);
    EXPECT_EQ(*type, exception);
    EXPECT_EQ(msg, fault.in_initialize ? context + " failure caused by " + cause : cause);
    EXPECT_TRUE(Seam::get().all_happened());
    std::vector<::testing::Matcher<support::LogLine>> lines;
    lines.push_back(
        FailureLine("requestreply/Exception", fault.context, support::filled(*fault.log_template, fault.msg)));
    if (fault.in_initialize) {
      lines.push_back(FailureLine("requestreply/UntypedCommon", context,
                                  support::filled(QVX_LOG_ANY_FAILURE_s, "failed (see previous errors)")));
    }
    EXPECT_THAT(log_.lines(), ElementsAreArray(lines));
    EXPECT_EQ(delete_topics(), fault.keeps_filter ? 1 : 0);
  }

  /// Has the call report a failure that nobody may notice while `create` runs.
  void expect_success(Call call, DDS_ReturnCode_t retcode, const std::function<void()>& create) {
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

TEST_F(CreationFaults, AreReportedAndUndoneWhereAFactoryReturnsNull) {
  constexpr DDS_ReturnCode_t error = DDS_RETCODE_ERROR;
  const char* topics = "zemtra::details::get_or_create_topic";
  const QVXLogMessage *creation = &QVX_LOG_CREATION_FAILURE_s, *any = &QVX_LOG_ANY_FAILURE_s;
  for (const bool requester : {true, false}) {
    const char* first_topic = requester ? "topic CalcRequest" : "topic CalcReply";
    const char* second_topic = requester ? "topic CalcReply" : "topic CalcRequest";
    const char* names = requester ? "(CalcRequest, CalcReply)" : "(CalcReply, CalcRequest)";
    std::vector<CreationFault> faults = {
        {Call::create_topic, 1, topics, creation, first_topic},
        {Call::duplicate_string, 1, "EntityUntypedImpl::get_datawriter_qos", any, "allocate string"},
        {Call::create_datawriter, 1, "initialize", creation, "DataWriter"},
        {Call::create_topic, 2, topics, creation, second_topic},
        {Call::duplicate_string, 2, "EntityUntypedImpl::get_datareader_qos", any, "allocate string", "", requester},
        {Call::create_datareader, 1, "initialize", creation, "DataReader", "", requester},
        {Call::create_readcondition, 1, "initialize", creation, "any-sample read condition", names},
        {Call::create_readcondition, 2, "initialize", creation, "not-read-sample read condition", names},
    };
    if (requester) {
      faults.push_back({Call::create_contentfilteredtopic, 1, "CorrelationCFTBuilder::create_correlation_cft",
                        &QVX_LOG_CREATE_s, "content-filtered topic for topic CalcReply"});
    }
    for (const CreationFault& fault : faults) {
      expect_failure(fault, error, typeid(zemtra::RuntimeException), [&] {
        if (requester) {
          make_requester();
        } else {
          make_replier();
        }
      });
    }
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
    for (const Failure& failure : kFailures) {
      expect_failure(fault, failure.retcode, *failure.exception, [this, from] { create_requester(from); });
    }
    for (const DDS_ReturnCode_t retcode : kNothingThere) {
      expect_success(fault.call, retcode, [this, from] { create_requester(from); });
    }
  }
}

TEST_F(CreationFaults, OfTheWaitSetAndTheWritersQosAreNotLookedAt) {
  for (const Call call : {Call::attach_condition, Call::get_writer_qos}) {
    for (const Failure& failure : kFailures) {
      expect_success(call, failure.retcode, [this] { make_requester(); });
    }
  }
}

TEST_F(CreationFaults, OfThePoolOfWaitSetsAreExhaustedMemory) {
  Seam::get().plan({Call::create_pool});
  EXPECT_THROW(make_requester(), std::bad_alloc);
  EXPECT_THAT(log_.lines(), IsEmpty());
  EXPECT_EQ(delete_topics(), 0);
}

TEST_F(CreationFaults, ThatAreNotTheLibrarysOwnPassUnchangedAndAreUndone) {
  const Call once[] = {Call::create_topic,         Call::get_default_datawriter_qos,
                       Call::duplicate_string,     Call::create_datawriter,
                       Call::get_writer_qos,       Call::create_contentfilteredtopic,
                       Call::add_property,         Call::get_default_datareader_qos,
                       Call::create_datareader,    Call::attach_condition,
                       Call::create_readcondition, Call::create_index,
                       Call::create_pool};
  std::vector<std::pair<Call, int>> calls = {
      {Call::create_topic, 2}, {Call::duplicate_string, 2}, {Call::create_readcondition, 2}};
  for (const Call call : once) { calls.emplace_back(call, 1); }
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

class DeletionFaults : public RequestReply {
 protected:
  static std::string not_removed() { return support::filled(QVX_LOG_REMOVE_FAILURE_s, "condition"); }
  static std::string not_deleted(const std::string& what) {
    return support::filled(QVX_LOG_DESTRUCTION_FAILURE_s, what);
  }

  template <class Make>
  void expect_logged(Call call, int occurrence, const std::vector<std::string>& expected, Make make) {
    for (int retcode = DDS_RETCODE_ERROR; retcode <= DDS_RETCODE_ILLEGAL_OPERATION; ++retcode) {
      SCOPED_TRACE(std::string(support::name_of(call)) + " " + std::to_string(occurrence) + ", code " +
                   std::to_string(retcode));
      auto entity = make();
      Seam::get().reset();
      log_.clear();
      Seam::get().plan({call, occurrence, static_cast<DDS_ReturnCode_t>(retcode)});
      EXPECT_NO_THROW(entity->finalize());
      EXPECT_TRUE(Seam::get().all_happened());
      EXPECT_EQ(Seam::get().count(Call::delete_datawriter), 1) << "one failure does not stop the rest";
      EXPECT_TRUE(entity->reader == nullptr && entity->writer == nullptr);
      EXPECT_TRUE(entity->not_read_condition == nullptr && entity->any_sample_condition == nullptr);
      EXPECT_THAT(logged(), ElementsAreArray(expected));
      for (const support::LogLine& line : log_.lines()) {
        EXPECT_THAT(line, FailureLine("requestreply/UntypedCommon", "finalize", line.text));
      }
      delete_leftovers();
    }
  }
};

TEST_F(DeletionFaults, AreLoggedAndTheRestIsDeletedAllTheSame) {
  struct {
    Call call;
    int occurrence;
    std::vector<std::string> logged;
    bool filter = false;  // a requester's content-filtered topic cannot be deleted then either
  } const faults[] = {
      {Call::detach_condition, 1, {not_removed()}},
      {Call::delete_readcondition, 1, {not_deleted("read condition (1)"), not_deleted("reader")}, true},
      {Call::delete_readcondition, 2, {not_deleted("read condition (2)"), not_deleted("reader")}, true},
      {Call::get_reader_topicdescription, 1, {}, true},
      {Call::delete_datareader, 1, {not_deleted("reader")}, true},
      {Call::delete_datawriter, 1, {not_deleted("writer")}},
  };
  const std::string filter = not_deleted("content-filtered topic");
  const auto requester = [this] { return make_requester(); };
  for (const auto& fault : faults) {
    expect_logged(fault.call, fault.occurrence, fault.logged, [this] { return make_replier(); });
    std::vector<std::string> of_requester = fault.logged;
    if (fault.filter) { of_requester.push_back(filter); }
    expect_logged(fault.call, fault.occurrence, of_requester, requester);
  }
  expect_logged(Call::delete_contentfilteredtopic, 1, {filter}, requester);
}

}  // namespace
}  // namespace requestreply_test
