#include "requestreply/fixture.hpp"
#include "support/vtable.hpp"

namespace requestreply_test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Gives an entity the plain topics "W" and "R".
class PlainTopics : public EntityUntypedImpl::TopicBuilder {
 public:
  DDSTopic* create_writer_topic(const EntityParams& params, const char* type_name) override {
    return DDSTopic::narrow(zemtra::details::get_or_create_topic(params.participant(), "W", type_name, false));
  }
  DDSTopicDescription* create_reader_topic(const EntityParams& params, const char* type_name) override {
    return zemtra::details::get_or_create_topic(params.participant(), "R", type_name, false);
  }
};

class CountingListener final : public DDSDataReaderListener {
 public:
  void on_data_available(DDSDataReader* /*reader*/) override { ++calls; }
  int calls = 0;
};

template <class Exception>
const char* register_that_throws(DDSTypeSupport* /*type_support*/, DDSDomainParticipant* /*participant*/) {
  throw Exception("M");
}

class Lifecycle : public RequestReply {
 protected:
  static int attached_to(Open<EntityUntypedImpl>& entity) {
    DDSConditionSeq attached;
    EXPECT_EQ(entity.waitset.get_conditions(attached), DDS_RETCODE_OK);
    return attached.length();
  }
  void initialize(EntityUntypedImpl& entity) {
    PlainTopics topics;
    entity.initialize(replier_params(), register_string, register_string, 24, topics, nullptr, true, "Role");
  }
};

TEST_F(Lifecycle, OfARequesterCreatesAndDeletesInAFixedOrder) {
  const std::string type = DDSStringTypeSupport::get_type_name();
  auto requester = make_requester();
  EXPECT_THAT(Seam::get().trace(),
              ElementsAre("participant.create_topic(CalcRequest, " + type + ")",
                          "participant.get_default_datawriter_qos(CalcRequest)", "duplicate_string",
                          "participant.create_datawriter", "participant.create_topic(CalcReply, " + type + ")",
                          "writer.get_qos", "participant.create_contentfilteredtopic",
                          "participant.get_default_datareader_qos(CalcReply)", "duplicate_string", "add_property",
                          "participant.create_datareader", "reader.create_readcondition(65535, 65535, 65535)",
                          "reader.create_readcondition(2, 65535, 65535)", "waitset.attach_condition",
                          "reader.create_index(RequestReplyIndex)", "create_pool"));
  Seam::get().reset();
  requester.reset();
  EXPECT_THAT(Seam::get().trace(),
              ElementsAre("delete_pool", "waitset.detach_condition", "reader.delete_readcondition",
                          "reader.delete_readcondition", "reader.get_topicdescription", "participant.delete_datareader",
                          "participant.delete_contentfilteredtopic", "participant.delete_datawriter"));
  EXPECT_NE(real_participant_->lookup_topicdescription("CalcRequest"), nullptr);
  EXPECT_NE(real_participant_->lookup_topicdescription("CalcReply"), nullptr);
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(Lifecycle, OfAReplierCreatesAndDeletesInAFixedOrder) {
  const std::string type = DDSStringTypeSupport::get_type_name();
  auto replier = make_replier();
  EXPECT_THAT(Seam::get().trace(),
              ElementsAre("participant.create_topic(CalcReply, " + type + ")",
                          "participant.get_default_datawriter_qos(CalcReply)", "duplicate_string",
                          "participant.create_datawriter", "participant.create_topic(CalcRequest, " + type + ")",
                          "participant.get_default_datareader_qos(CalcRequest)", "duplicate_string", "add_property",
                          "participant.create_datareader", "reader.create_readcondition(65535, 65535, 65535)",
                          "reader.create_readcondition(2, 65535, 65535)", "waitset.attach_condition"));
  Seam::get().reset();
  replier.reset();
  EXPECT_THAT(Seam::get().trace(), ElementsAre("waitset.detach_condition", "reader.delete_readcondition",
                                               "reader.delete_readcondition", "reader.get_topicdescription",
                                               "participant.delete_datareader", "participant.delete_datawriter"));
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(Lifecycle, GoesThroughThePublisherAndSubscriberThatAreGiven) {
  DDSPublisher* publisher = participant_->create_publisher(DDS_PUBLISHER_QOS_DEFAULT, nullptr, 0);
  DDSSubscriber* subscriber = participant_->create_subscriber(DDS_SUBSCRIBER_QOS_DEFAULT, nullptr, 0);
  auto requester = make_requester(requester_params().publisher(publisher).subscriber(subscriber));
  EXPECT_EQ(requester->publisher, publisher);
  EXPECT_EQ(requester->subscriber, subscriber);
  requester.reset();
  std::vector<std::string> through;
  for (const std::string& call : Seam::get().trace()) {
    if (call.find("_datawriter") != std::string::npos || call.find("_datareader") != std::string::npos) {
      if (call.find("get_default") == std::string::npos) { through.push_back(call); }
    }
  }
  EXPECT_THAT(through, ElementsAre("publisher.create_datawriter", "subscriber.create_datareader",
                                   "subscriber.delete_datareader", "publisher.delete_datawriter"));
  EXPECT_EQ(participant_->delete_publisher(publisher), DDS_RETCODE_OK);
  EXPECT_EQ(participant_->delete_subscriber(subscriber), DDS_RETCODE_OK);
}

TEST_F(Lifecycle, StartsWithNothingAndEndsWithNothingButTheTopics) {
  { const EntityUntypedImpl never_initialized(true); }
  EXPECT_THAT(Seam::get().trace(), IsEmpty());
  Open<EntityUntypedImpl> entity(false);
  EXPECT_TRUE(entity.get_datareader() == nullptr && entity.get_datawriter() == nullptr);
  EXPECT_EQ(entity.participant, nullptr);
  EXPECT_EQ(entity.sample_size, -1);
  EXPECT_EQ(entity.max_samples_per_read, DDS_LENGTH_UNLIMITED);
  EXPECT_FALSE(entity.sample_flag || entity.finalized || entity.owns_reader_cft);

  initialize(entity);
  EXPECT_EQ(entity.participant, participant_.get());
  EXPECT_EQ(entity.get_datawriter(), entity.writer);
  EXPECT_EQ(entity.get_datareader(), entity.reader);
  EXPECT_STREQ(entity.writer_topic->get_name(), "W");
  EXPECT_STREQ(entity.reader_topic->get_name(), "R");
  EXPECT_EQ(entity.any_sample_condition->get_sample_state_mask(), DDS_ANY_SAMPLE_STATE);
  EXPECT_EQ(entity.not_read_condition->get_sample_state_mask(), DDS_NOT_READ_SAMPLE_STATE);
  EXPECT_EQ(attached_to(entity), 1);
  EXPECT_EQ(entity.sample_size, 24);
  EXPECT_TRUE(entity.sample_flag);
  EXPECT_EQ(entity.max_samples_per_read, DDS_DataReaderQos().reader_resource_limits.max_samples_per_read);

  entity.finalize();
  EXPECT_TRUE(entity.finalized);
  EXPECT_TRUE(entity.get_datareader() == nullptr && entity.get_datawriter() == nullptr);
  EXPECT_TRUE(entity.any_sample_condition == nullptr && entity.not_read_condition == nullptr);
  EXPECT_EQ(entity.participant, participant_.get());
  EXPECT_STREQ(entity.writer_topic->get_name(), "W");
  EXPECT_STREQ(entity.reader_topic->get_name(), "R");

  Seam::get().reset();
  entity.finalize();
  EXPECT_THAT(Seam::get().trace(), IsEmpty());
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(Lifecycle, HandsTypeSupportsAndParticipantToTheRegistrationFunctionsOfItsRole) {
  static std::vector<DDSTypeSupport*> seen;
  seen.clear();
  const auto register_and_note = [](DDSTypeSupport* type_support, DDSDomainParticipant* participant) {
    seen.push_back(type_support);
    return register_string(type_support, participant);
  };
  DDSStringTypeSupport request_type;
  DDSStringTypeSupport reply_type;
  {
    const RequesterUntypedImpl requester(
        requester_params().request_type_support(&request_type).reply_type_support(&reply_type), register_and_note,
        register_string, kSampleSize, false);
  }
  EXPECT_THAT(seen, ElementsAre(&request_type));
  seen.clear();
  ReplierUntypedImpl replier;
  OpenParams params = replier_params();
  params.datawriter_type_support_ = &reply_type;
  params.datareader_type_support_ = &request_type;
  replier.initialize(params, register_and_note, register_string, kSampleSize, nullptr, false);
  EXPECT_THAT(seen, ElementsAre(&request_type));
}

TEST_F(Lifecycle, InstallsAListenerForAvailableDataAndOnlyThat) {
  CountingListener listener;
  {
    ReplierUntypedImpl replier;
    replier.initialize(replier_params(), register_string, register_string, kSampleSize, &listener, false);
    const auto requester = make_requester();
    EXPECT_THAT(participant_->reader_listeners,
                ElementsAre(std::make_pair(&listener, DDS_DATA_AVAILABLE_STATUS),
                            std::make_pair(static_cast<DDSDataReaderListener*>(nullptr), DDS_STATUS_MASK_NONE)));
    send(*requester, "request");
    EXPECT_EQ(listener.calls, 1);
    EXPECT_THAT(take_all(replier), ElementsAre("request"));
  }
}

TEST_F(Lifecycle, WrapsALibraryExceptionOfTheCallersCodeButNoOtherAndUndoesEverything) {
  PlainTopics topics;
  {
    Open<EntityUntypedImpl> wrapping(false), passing(false);
    EXPECT_EQ(message_of<zemtra::UnsupportedException>([&] {
                wrapping.initialize(replier_params(), register_string,
                                    register_that_throws<zemtra::UnsupportedException>, 8, topics, nullptr, true, "R");
              }),
              "zemtra::details::EntityUntypedImpl::initialize failure caused by M");
    EXPECT_TRUE(wrapping.finalized);
    EXPECT_EQ(wrapping.writer, nullptr);
    EXPECT_FALSE(wrapping.sample_flag);
    EXPECT_EQ(wrapping.sample_size, 8);
    EXPECT_EQ(Seam::get().count(Call::delete_datawriter), 1);
    log_.clear();
    EXPECT_EQ(message_of<std::runtime_error>([&] {
                passing.initialize(replier_params(), register_string, register_that_throws<std::runtime_error>, 8,
                                   topics, nullptr, true, "R");
              }),
              "M");
    EXPECT_FALSE(passing.finalized);
    EXPECT_NE(passing.writer, nullptr);
    EXPECT_EQ(passing.reader, nullptr);
  }
  EXPECT_EQ(Seam::get().count(Call::delete_datawriter), 2) << "at its end";
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(Lifecycle, ReportsParametersThatAreWrongAndCreatesNothing) {
  OpenParams params(nullptr);
  params.service_name_ = "Calc";
  Open<ReplierUntypedImpl> replier;
  EXPECT_EQ(message_of<zemtra::BadParameterException>(
                [&] { replier.initialize(params, register_string, register_string, 8, nullptr, false); }),
            "zemtra::details::EntityUntypedImpl::initialize failure caused by " +
                report("EntityParams::validate", DDS_LOG_BAD_PARAMETER_s, "NULL participant"));
  EXPECT_TRUE(replier.finalized);
  EXPECT_EQ(replier.sample_size, -1);
  EXPECT_THAT(log_.lines(),
              ElementsAre(FailureLine("requestreply/Exception", "EntityParams::validate",
                                      support::filled(DDS_LOG_BAD_PARAMETER_s, "NULL participant")),
                          FailureLine("requestreply/UntypedCommon", "zemtra::details::EntityUntypedImpl::initialize",
                                      support::filled(QVX_LOG_ANY_FAILURE_s, "failed (see previous errors)"))));
  EXPECT_THAT(Seam::get().trace(), IsEmpty());
}

TEST_F(Lifecycle, LogsThatAPlainTopicIsNoFilteredOneToDelete) {
  {
    EntityUntypedImpl entity(true);
    initialize(entity);
  }
  EXPECT_THAT(log_.lines(),
              ElementsAre(FailureLine("requestreply/UntypedCommon", "finalize",
                                      support::filled(QVX_LOG_DESTRUCTION_FAILURE_s, "content-filtered topic"))));
  EXPECT_EQ(Seam::get().trace().back(), "participant.delete_datawriter");
}

TEST_F(Lifecycle, ExchangesTwoRequestersWithTheirConditionsStillAttached) {
  const auto replier = make_replier();
  auto a = make_requester();
  DDS_DataReaderQos small;
  small.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
  small.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
  small.reader_resource_limits.max_samples_per_read = 3;
  auto b = std::make_unique<Open<RequesterUntypedImpl>>(requester_params().datareader_qos(small), register_string,
                                                        register_string, 99, true);
  const auto parts = [](auto& of) {
    return std::make_tuple(of->reader, of->writer, of->reader_topic, of->any_sample_condition, of->not_read_condition);
  };
  const auto parts_of_a = parts(a), parts_of_b = parts(b);
  swap(*a, *b);
  EXPECT_TRUE(parts(b) == parts_of_a && parts(a) == parts_of_b);
  EXPECT_EQ(a->sample_size, 99);
  EXPECT_EQ(b->sample_size, kSampleSize);
  // These stay.
  EXPECT_FALSE(a->sample_flag);
  EXPECT_TRUE(b->sample_flag);
  EXPECT_EQ(b->max_samples_per_read, 3);
  EXPECT_TRUE(a->owns_reader_cft && b->owns_reader_cft);

  for (Open<RequesterUntypedImpl>* requester : {a.get(), b.get()}) {
    const DDS_SampleIdentity_t request = send(*requester, "request");
    EXPECT_THAT(take_all(*replier), ElementsAre("request"));
    reply(*replier, request, "reply");
    EXPECT_TRUE(requester->wait_for_replies(kLong, 1, request));
    EXPECT_TRUE(requester->wait_for_any_sample(kLong, 1));
    EXPECT_EQ(requester->not_read_condition->get_trigger_value(), false) << "the wait has touched the reply";
    reply(*replier, request, "another");
    DDSConditionSeq triggered;
    EXPECT_EQ(requester->waitset.wait(triggered, kLong), DDS_RETCODE_OK);
    EXPECT_THAT(take_replies(*requester, request), ElementsAre("reply", "another"));
  }
}

TEST_F(Lifecycle, MovesEverythingButWhetherItIsOverIntoAnEntityThatWasNotInitialized) {
  Open<EntityUntypedImpl> a(false), b(false);
  initialize(a);
  b.finalize();
  a.swap(b);
  EXPECT_TRUE(a.reader == nullptr && a.participant == nullptr);
  EXPECT_EQ(attached_to(a), 0);
  EXPECT_EQ(attached_to(b), 1);
  EXPECT_EQ(a.max_samples_per_read, DDS_DataReaderQos().reader_resource_limits.max_samples_per_read);
  b.finalize();
  EXPECT_NE(b.reader, nullptr) << "it is over whatever it is exchanged for";
  b.swap(a);
  a.finalize();
  EXPECT_EQ(Seam::get().count(Call::delete_datareader), 1);
  EXPECT_THAT(log_.lines(), IsEmpty());
}

TEST_F(Lifecycle, HasTheMembersAndVirtualOperationsThatFrontEndsRelyOn) {
  EXPECT_STREQ(EntityUntypedImpl::CLASS_NAME, "zemtra::details::EntityUntypedImpl");
  Open<EntityUntypedImpl> entity(false);
  const std::vector<const void*> members = {&entity,
                                            &entity.participant,
                                            &entity.publisher,
                                            &entity.subscriber,
                                            &entity.writer_topic,
                                            &entity.reader_topic,
                                            &entity.writer,
                                            &entity.reader,
                                            &entity.waitset,
                                            &entity.not_read_condition,
                                            &entity.any_sample_condition,
                                            &entity.sample_size,
                                            &entity.sample_flag,
                                            &entity.max_samples_per_read,
                                            &entity.finalized,
                                            &entity.owns_reader_cft};
  EXPECT_TRUE(std::is_sorted(members.begin(), members.end()));
  EXPECT_EQ(sizeof(ReplierUntypedImpl), sizeof(EntityUntypedImpl));
  EXPECT_EQ(sizeof(RequesterUntypedImpl), sizeof(EntityUntypedImpl) + sizeof(void*));

  const EntityUntypedImpl plain(false);
  const ReplierUntypedImpl replier;
  const std::unique_ptr<RequesterUntypedImpl> requester =
      std::make_unique<RequesterUntypedImpl>(requester_params(), register_string, register_string, kSampleSize, false);
  const std::string ns = "zemtra::details::";
  EXPECT_EQ(support::virtual_function(&plain, 0), ns + "EntityUntypedImpl::~EntityUntypedImpl");
  EXPECT_EQ(support::virtual_function(&replier, 0), ns + "ReplierUntypedImpl::~ReplierUntypedImpl");
  EXPECT_EQ(support::virtual_function(requester.get(), 0), ns + "RequesterUntypedImpl::~RequesterUntypedImpl");
  for (const void* object : {static_cast<const void*>(&plain), static_cast<const void*>(&replier),
                             static_cast<const void*>(requester.get())}) {
    EXPECT_EQ(support::virtual_function(object, 2), ns + "EntityUntypedImpl::get_datawriter_qos");
    EXPECT_EQ(support::virtual_function(object, 3), ns + "EntityUntypedImpl::get_datareader_qos");
  }
}

}  // namespace

/// Not in the unnamed namespace, so that the names of its functions can be looked up.
class VisibleBuilder final : public EntityUntypedImpl::TopicBuilder {
 public:
  DDSTopic* create_writer_topic(const EntityParams& params, const char* type_name) override;
  DDSTopicDescription* create_reader_topic(const EntityParams& params, const char* type_name) override;
  ~VisibleBuilder() override;
};
DDSTopic* VisibleBuilder::create_writer_topic(const EntityParams&, const char*) {
  throw std::runtime_error("writer");  // unlike the other, or else the two become one function
}
DDSTopicDescription* VisibleBuilder::create_reader_topic(const EntityParams&, const char*) {
  throw std::runtime_error("reader");
}
VisibleBuilder::~VisibleBuilder() = default;

namespace {

TEST(TopicBuilder, HasItsVirtualOperationsInOrderAndNoData) {
  const VisibleBuilder builder;
  const std::string name = "requestreply_test::VisibleBuilder::";
  EXPECT_EQ(support::virtual_function(&builder, 0), name + "create_writer_topic");
  EXPECT_EQ(support::virtual_function(&builder, 1), name + "create_reader_topic");
  EXPECT_EQ(support::virtual_function(&builder, 2), name + "~VisibleBuilder");
  EXPECT_EQ(sizeof(EntityUntypedImpl::TopicBuilder), sizeof(void*));
}

}  // namespace
}  // namespace requestreply_test
