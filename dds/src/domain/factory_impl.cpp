#include <dds/domain_participant_factory.hpp>
#include <memory>
#include <unordered_map>

#include "domain/participant_impl.hpp"
#include "log/log.hpp"
#include "qos/profile_store.hpp"
#include "qos/qos_check.hpp"
#include "transport/load_transport.hpp"

namespace dds {
namespace {

class FactoryImpl final : public DDSDomainParticipantFactory {
 public:
  DDSDomainParticipant* create_participant(DDS_DomainId_t domain_id, const DDS_DomainParticipantQos& qos,
                                           void* listener, DDS_StatusMask mask) override DDS_EXCLUDES(mutex_);
  DDS_ReturnCode_t delete_participant(DDSDomainParticipant* participant) override DDS_EXCLUDES(mutex_);

  DDS_ReturnCode_t set_profile_datawriter_qos(const char* library, const char* profile, const char* topic_pattern,
                                              const DDS_DataWriterQos& qos) override {
    return profiles_.set_profile_datawriter_qos(library, profile, topic_pattern, qos);
  }
  DDS_ReturnCode_t set_profile_datareader_qos(const char* library, const char* profile, const char* topic_pattern,
                                              const DDS_DataReaderQos& qos) override {
    return profiles_.set_profile_datareader_qos(library, profile, topic_pattern, qos);
  }
  void clear_profiles() override { profiles_.clear_profiles(); }
  DDS_ReturnCode_t get_datawriter_qos_from_profile(DDS_DataWriterQos& qos, const char* library, const char* profile,
                                                   const char* topic_name) override {
    return profiles_.get_datawriter_qos_from_profile(qos, library, profile, topic_name);
  }
  DDS_ReturnCode_t get_datareader_qos_from_profile(DDS_DataReaderQos& qos, const char* library, const char* profile,
                                                   const char* topic_name) override {
    return profiles_.get_datareader_qos_from_profile(qos, library, profile, topic_name);
  }

 private:
  DDS_ReturnCode_t try_delete(DDSDomainParticipant* participant) DDS_EXCLUDES(mutex_);

  Mutex mutex_;
  std::unordered_map<DDSDomainParticipant*, std::unique_ptr<ParticipantImpl>> participants_ DDS_GUARDED_BY(mutex_);
  ProfileStore profiles_;
};

DDSDomainParticipant* FactoryImpl::create_participant(DDS_DomainId_t domain_id, const DDS_DomainParticipantQos& qos,
                                                      void* listener, DDS_StatusMask /*mask*/) {
  constexpr char context[] = "create_participant";
  if (listener != nullptr) {
    DDS_LOG_FAILURE(context, DDS_LOG_UNSUPPORTED_s, "a listener of a participant");
    return nullptr;
  }
  if (domain_id < 0) {
    DDS_LOG_FAILURE(context, DDS_LOG_BAD_PARAMETER_s, "domain %d", domain_id);
    return nullptr;
  }
  if (check(qos, context) != DDS_RETCODE_OK) { return nullptr; }
  try {
    std::unique_ptr<Transport> transport = make_transport(domain_id, qos, context);
    if (transport == nullptr) { return nullptr; }
    auto made = std::make_unique<ParticipantImpl>(domain_id, std::move(transport));
    DDSDomainParticipant* participant = made.get();
    const MutexLock lock(mutex_);
    participants_.emplace(participant, std::move(made));
    return participant;
  } catch (const std::bad_alloc&) {
    DDS_LOG_FAILURE(context, QVX_LOG_CREATION_FAILURE_s, "participant: out of memory");
    return nullptr;
  }
}

DDS_ReturnCode_t FactoryImpl::delete_participant(DDSDomainParticipant* participant) {
  return DDS_LOG_REFUSAL("delete_participant", try_delete(participant), "the participant still holds entities");
}

DDS_ReturnCode_t FactoryImpl::try_delete(DDSDomainParticipant* participant) {
  std::unique_ptr<ParticipantImpl> deleted;
  const MutexLock lock(mutex_);
  const auto found = participants_.find(participant);
  if (found == participants_.end()) { return DDS_RETCODE_BAD_PARAMETER; }
  if (!found->second->empty()) { return DDS_RETCODE_PRECONDITION_NOT_MET; }
  deleted = std::move(found->second);
  participants_.erase(found);
  return DDS_RETCODE_OK;
}

}  // namespace
}  // namespace dds

// Never destroyed: participants may still be used while the program's static objects are.
DDSDomainParticipantFactory* DDSDomainParticipantFactory::get_instance() {
  static auto* const instance = new dds::FactoryImpl;
  return instance;
}
