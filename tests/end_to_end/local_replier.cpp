#include "replier.hpp"
#include "strings.hpp"

namespace end_to_end {

namespace {

class LocalReplier : public Replier, private DDSDataReaderListener {
 public:
  LocalReplier(DDSDomainParticipant* participant, const ReplierKind& kind) {
    DDS_DataReaderQos limited;
    limited.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
    limited.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
    limited.resource_limits.max_samples = kind.max_samples;
    // The builder serves both roles here: its two setters that know a role, the type supports, are not needed.
    auto params = zemtra::RequesterParams(participant).service_name("Calc");
    if (kind.max_samples != DDS_LENGTH_UNLIMITED) { params.datareader_qos(limited); }
    replier_.initialize(params, &register_strings, &register_strings, sizeof(char*), kind.echoes ? this : nullptr,
                        false);
  }

  // A call of the listener may still be looking for further requests when its last reply has been received.
  ~LocalReplier() override { EXPECT_EQ(replier_.get_datareader()->set_listener(nullptr, 0), DDS_RETCODE_OK); }

  std::vector<Request> receive(int max_count, int min_count) override {
    void** data = nullptr;
    int count = 0;
    DDS_SampleInfoSeq infos;
    if (!replier_.receive_sample_loaned(&data, &count, infos, max_count, DDS_DURATION_INFINITE, min_count)) {
      return {};
    }
    return requests_in(data, count, infos);
  }
  void reply(const DDS_SampleIdentity_t& request, const std::string& text) override {
    DDS_WriteParams_t write_params;
    const char* sample = text.c_str();
    replier_.send_sample(&sample, request, write_params);
  }
  void echo(int count, const std::string& prefix) override {
    while (count > 0) { count -= answer(receive(DDS_LENGTH_UNLIMITED, 1), prefix); }
  }
  void await_requesters(int count) override { await_others(replier_, count); }

 private:
  std::vector<Request> requests_in(void** data, int count, DDS_SampleInfoSeq& infos) {
    std::vector<Request> requests;
    for (int i = 0; i < count; ++i) {
      EXPECT_TRUE(infos[i].valid_data) << "a requester that vanishes leaves none without data";
      if (infos[i].valid_data) {
        requests.push_back({text_of(data[i]), zemtra::details::get_sample_identity_from_sample_info(infos[i])});
      }
    }
    replier_.return_loan(data, infos);
    return requests;
  }
  int answer(const std::vector<Request>& requests, const std::string& prefix) {
    for (const Request& request : requests) { reply(request.identity, prefix + request.text); }
    return static_cast<int>(requests.size());
  }
  void on_data_available(DDSDataReader* /*reader*/) override {
    void** data = nullptr;
    int count = 0;
    DDS_SampleInfoSeq infos;
    while (replier_.get_sample_loaned(&data, &count, infos, DDS_LENGTH_UNLIMITED, true, nullptr)) {
      answer(requests_in(data, count, infos), "re: ");
    }
  }

  zemtra::details::ReplierUntypedImpl replier_;
};

}  // namespace

std::unique_ptr<Replier> create_replier(DDSDomainParticipant* participant, const ReplierKind& kind) {
  return std::make_unique<LocalReplier>(participant, kind);
}

}  // namespace end_to_end
