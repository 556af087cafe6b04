#include <cstdio>
#include <dds/dds.hpp>
#include <requestreply/requestreply.hpp>

const char* register_string(DDSTypeSupport* /*type_support*/, DDSDomainParticipant* participant) {
  DDSStringTypeSupport::register_type(participant, nullptr);
  return DDSStringTypeSupport::get_type_name();
}

int main() {
  DDSDomainParticipant* participant =
      DDSDomainParticipantFactory::get_instance()->create_participant(0, DDS_PARTICIPANT_QOS_DEFAULT, nullptr, 0);
  const zemtra::RequesterParams params = zemtra::RequesterParams(participant).service_name("Echo");
  zemtra::details::ReplierUntypedImpl replier;
  replier.initialize(params, register_string, register_string, sizeof(char*), nullptr, false);
  zemtra::details::RequesterUntypedImpl requester(params, register_string, register_string, sizeof(char*), false);

  const char* text = "Hello";
  DDS_WriteParams_t request;
  requester.send_sample(&text, request);  // leaves the request's identity in the parameters

  void** samples = nullptr;  // of the string type, so each points to a char*
  int count = 0;
  DDS_SampleInfoSeq infos;
  if (!replier.receive_sample_loaned(&samples, &count, infos, 1, {10, 0}, 1)) { return 1; }
  DDS_WriteParams_t reply;
  replier.send_sample(samples[0], zemtra::details::get_sample_identity_from_sample_info(infos[0]), reply);
  replier.return_loan(samples, infos);

  if (!requester.wait_for_replies({10, 0}, 1, request.identity)) { return 1; }
  requester.get_reply_loaned(&samples, &count, infos, 1, request.identity, true);
  std::puts(*static_cast<char**>(samples[0]));
  requester.return_loan(samples, infos);
}
