#include "qos/profile_store.hpp"

#include <new>

#include "log/log.hpp"
#include "qos/qos_check.hpp"

namespace dds {
namespace {

bool names_a_profile(const char* context, const char* library, const char* profile) {
  if (library == nullptr || *library == '\0') {
    DDS_LOG_FAILURE(context, DDS_LOG_BAD_PARAMETER_s, "%s QoS library name", library == nullptr ? "null" : "empty");
    return false;
  }
  if (profile == nullptr) {
    DDS_LOG_FAILURE(context, DDS_LOG_BAD_PARAMETER_s, "null QoS profile name");
    return false;
  }
  return true;
}

DDS_ReturnCode_t unknown_profile(const char* context, const char* library, const char* profile, bool has_library) {
  if (has_library) {
    DDS_LOG_FAILURE(context, DDS_LOG_BAD_PARAMETER_s, "unknown QoS profile \"%s\" in library \"%s\"", profile, library);
  } else {
    DDS_LOG_FAILURE(context, DDS_LOG_BAD_PARAMETER_s, "unknown QoS library \"%s\"", library);
  }
  return DDS_RETCODE_BAD_PARAMETER;
}

DDS_ReturnCode_t out_of_memory(const char* context) {
  DDS_LOG_FAILURE(context, QVX_LOG_ANY_FAILURE_s, "out of memory");
  return DDS_RETCODE_OUT_OF_RESOURCES;
}

template <class Qos>
void set_for(TopicQosMap<Qos>& settings, const char* topic_pattern, const Qos& qos) {
  if (topic_pattern == nullptr) {
    settings.set_general(qos);
  } else {
    settings.set(topic_pattern, qos);
  }
}

}  // namespace

template <class Qos>
DDS_ReturnCode_t ProfileStore::set(const char* context, const char* library, const char* profile,
                                   const char* topic_pattern, const Qos& qos, TopicQosMap<Qos> Profile::*settings) {
  if (!names_a_profile(context, library, profile)) { return DDS_RETCODE_BAD_PARAMETER; }
  const DDS_ReturnCode_t refused = check(qos, context);
  if (refused != DDS_RETCODE_OK) { return refused; }
  try {
    Key key(library, profile);
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto known = profiles_.find(key);
    if (known != profiles_.end()) {
      set_for(known->second.*settings, topic_pattern, qos);
    } else {
      // Complete before it becomes known: a profile that could not be set must not be found later.
      Profile fresh;
      set_for(fresh.*settings, topic_pattern, qos);
      profiles_.emplace(std::move(key), std::move(fresh));
    }
  } catch (const std::bad_alloc&) { return out_of_memory(context); }
  return DDS_RETCODE_OK;
}

template <class Qos>
DDS_ReturnCode_t ProfileStore::get(const char* context, Qos& qos, const char* library, const char* profile,
                                   const char* topic_name, TopicQosMap<Qos> Profile::*settings) {
  if (!names_a_profile(context, library, profile)) { return DDS_RETCODE_BAD_PARAMETER; }
  try {
    const Key key(library, profile);
    std::unique_lock<std::mutex> lock(mutex_);
    const auto known = profiles_.find(key);
    if (known == profiles_.end()) {
      const bool has_library = knows_library(key.first);
      lock.unlock();
      return unknown_profile(context, library, profile, has_library);
    }
    Qos copy((known->second.*settings).find(topic_name));
    qos = std::move(copy);
  } catch (const std::bad_alloc&) { return out_of_memory(context); }
  return DDS_RETCODE_OK;
}

bool ProfileStore::knows_library(const std::string& library) const {
  const auto first = profiles_.lower_bound(Key(library, std::string()));
  return first != profiles_.end() && first->first.first == library;
}

DDS_ReturnCode_t ProfileStore::set_profile_datawriter_qos(const char* library, const char* profile,
                                                          const char* topic_pattern, const DDS_DataWriterQos& qos) {
  return set("DDSDomainParticipantFactory::set_profile_datawriter_qos", library, profile, topic_pattern, qos,
             &Profile::writers);
}

DDS_ReturnCode_t ProfileStore::set_profile_datareader_qos(const char* library, const char* profile,
                                                          const char* topic_pattern, const DDS_DataReaderQos& qos) {
  return set("DDSDomainParticipantFactory::set_profile_datareader_qos", library, profile, topic_pattern, qos,
             &Profile::readers);
}

void ProfileStore::clear_profiles() {
  const std::lock_guard<std::mutex> lock(mutex_);
  profiles_.clear();
}

DDS_ReturnCode_t ProfileStore::get_datawriter_qos_from_profile(DDS_DataWriterQos& qos, const char* library,
                                                               const char* profile, const char* topic_name) {
  return get("DDSDomainParticipantFactory::get_datawriter_qos_from_profile", qos, library, profile, topic_name,
             &Profile::writers);
}

DDS_ReturnCode_t ProfileStore::get_datareader_qos_from_profile(DDS_DataReaderQos& qos, const char* library,
                                                               const char* profile, const char* topic_name) {
  return get("DDSDomainParticipantFactory::get_datareader_qos_from_profile", qos, library, profile, topic_name,
             &Profile::readers);
}

}  // namespace dds
