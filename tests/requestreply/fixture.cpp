#include "requestreply/fixture.hpp"

namespace requestreply_test {

const char* register_string(DDSTypeSupport* /*type_support*/, DDSDomainParticipant* participant) {
  const char* name = DDSStringTypeSupport::get_type_name();
  EXPECT_EQ(DDSStringTypeSupport::register_type(participant, name), DDS_RETCODE_OK);
  return name;
}

std::vector<std::string> Loan::texts() const {
  std::vector<std::string> all;
  for (int i = 0; i < infos.length(); ++i) { all.emplace_back(*static_cast<char**>(data[i])); }
  return all;
}

std::string report(const std::string& context, const QVXLogMessage& log_template, const std::string& msg) {
  return context + ":" + support::filled(log_template, msg);
}

RequestReply::RequestReply()
    : real_participant_(DDSDomainParticipantFactory::get_instance()->create_participant(0, DDS_PARTICIPANT_QOS_DEFAULT,
                                                                                        nullptr, DDS_STATUS_MASK_NONE)),
      participant_(std::make_unique<support::FaultyParticipant>(*real_participant_)) {
  Seam::get().reset();
}

// Not in TearDown, since the entities that a test's fixture holds are still there then.
RequestReply::~RequestReply() {
  Seam::get().reset();
  EXPECT_EQ(delete_topics(), 0) << "content-filtered topics are left";
  DDSDomainParticipantFactory* factory = DDSDomainParticipantFactory::get_instance();
  const DDS_ReturnCode_t deleted = factory->delete_participant(real_participant_);
  EXPECT_EQ(deleted, DDS_RETCODE_OK) << "something is left in the participant";
  if (deleted != DDS_RETCODE_OK) {
    real_participant_->delete_contained_entities();
    factory->delete_participant(real_participant_);
  }
}

zemtra::RequesterParams RequestReply::requester_params() {
  zemtra::RequesterParams params(participant_.get());
  params.service_name("Calc");
  return params;
}

OpenParams RequestReply::replier_params() {
  OpenParams params(participant_.get());
  params.service_name_ = "Calc";
  return params;
}

std::unique_ptr<Open<RequesterUntypedImpl>> RequestReply::make_requester() {
  return make_requester(requester_params());
}

std::unique_ptr<Open<RequesterUntypedImpl>> RequestReply::make_requester(const zemtra::RequesterParams& params) {
  return std::make_unique<Open<RequesterUntypedImpl>>(params, register_string, register_string, kSampleSize, false);
}

std::unique_ptr<Open<ReplierUntypedImpl>> RequestReply::make_replier() { return make_replier(replier_params()); }

std::unique_ptr<Open<ReplierUntypedImpl>> RequestReply::make_replier(const EntityParams& params) {
  auto replier = std::make_unique<Open<ReplierUntypedImpl>>();
  replier->initialize(params, register_string, register_string, kSampleSize, nullptr, false);
  return replier;
}

DDSTopic* RequestReply::make_topic(const std::string& name) {
  const char* type_name = register_string(nullptr, participant_.get());
  return participant_->create_topic(name.c_str(), type_name, DDS_TOPIC_QOS_DEFAULT, nullptr, DDS_STATUS_MASK_NONE);
}

DDSContentFilteredTopic* RequestReply::make_filtered_topic(const std::string& name, DDSTopic* topic) {
  return participant_->create_contentfilteredtopic(name.c_str(), topic, "value = 'wanted'", DDS_StringSeq());
}

int RequestReply::delete_topics() {
  int filtered_topics = 0;
  for (const std::string& name : participant_->created_filtered_topics) {
    auto* topic = DDSContentFilteredTopic::narrow(real_participant_->lookup_topicdescription(name.c_str()));
    if (topic == nullptr) { continue; }
    ++filtered_topics;
    EXPECT_EQ(real_participant_->delete_contentfilteredtopic(topic), DDS_RETCODE_OK) << name;
  }
  for (const std::string& name : participant_->created_topics) {
    DDSTopic* topic = DDSTopic::narrow(real_participant_->lookup_topicdescription(name.c_str()));
    if (topic != nullptr) { EXPECT_EQ(real_participant_->delete_topic(topic), DDS_RETCODE_OK) << name; }
  }
  return filtered_topics;
}

void RequestReply::delete_leftovers() { EXPECT_EQ(real_participant_->delete_contained_entities(), DDS_RETCODE_OK); }

DDS_SampleIdentity_t RequestReply::send(EntityUntypedImpl& entity, const std::string& text) {
  const char* sample = text.c_str();
  DDS_WriteParams_t params;
  entity.send_sample(&sample, params);
  return params.identity;
}

void RequestReply::reply(ReplierUntypedImpl& replier, const DDS_SampleIdentity_t& request, const std::string& text) {
  const char* sample = text.c_str();
  DDS_WriteParams_t params;
  replier.send_sample(&sample, request, params);
}

std::vector<std::string> RequestReply::take_all(EntityUntypedImpl& entity) {
  Loan loan(entity);
  entity.get_sample_loaned(&loan.data, &loan.count, loan.infos, DDS_LENGTH_UNLIMITED, true, nullptr);
  return loan.texts();
}

std::vector<std::string> RequestReply::take_replies(RequesterUntypedImpl& requester,
                                                    const DDS_SampleIdentity_t& request) {
  Loan loan(requester);
  requester.get_reply_loaned(&loan.data, &loan.count, loan.infos, DDS_LENGTH_UNLIMITED, request, true);
  return loan.texts();
}

std::vector<DDS_SampleStateMask> RequestReply::sample_states(DDSDataReader& reader) {
  void** data = nullptr;
  int count = 0;
  DDS_SampleInfoSeq infos;
  std::vector<DDS_SampleStateMask> states;
  if (reader.read_or_take_untyped(&data, &count, infos, DDS_LENGTH_UNLIMITED, DDS_ANY_SAMPLE_STATE, DDS_ANY_VIEW_STATE,
                                  DDS_ANY_INSTANCE_STATE, nullptr, false) == DDS_RETCODE_OK) {
    for (int i = 0; i < count; ++i) { states.push_back(infos[i].sample_state); }
    EXPECT_EQ(reader.return_loan_untyped(data, infos), DDS_RETCODE_OK);
  }
  return states;
}

std::vector<std::string> RequestReply::logged() const {
  std::vector<std::string> texts;
  for (const support::LogLine& line : log_.lines()) { texts.push_back(line.text); }
  return texts;
}

}  // namespace requestreply_test
