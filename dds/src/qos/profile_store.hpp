#pragma once

#include <map>
#include <mutex>
#include <string>
#include <utility>

#include <dds/qos.hpp>

#include "qos/topic_qos_map.hpp"

namespace dds {

/// The QoS profiles of a factory. The operations are those of `DDSDomainParticipantFactory`, whose contract they keep.
/// Thread-safe.
class ProfileStore {
 public:
  DDS_ReturnCode_t set_profile_datawriter_qos(const char* library, const char* profile, const char* topic_pattern,
                                              const DDS_DataWriterQos& qos);
  DDS_ReturnCode_t set_profile_datareader_qos(const char* library, const char* profile, const char* topic_pattern,
                                              const DDS_DataReaderQos& qos);
  void clear_profiles();
  DDS_ReturnCode_t get_datawriter_qos_from_profile(DDS_DataWriterQos& qos, const char* library, const char* profile,
                                                   const char* topic_name);
  DDS_ReturnCode_t get_datareader_qos_from_profile(DDS_DataReaderQos& qos, const char* library, const char* profile,
                                                   const char* topic_name);

 private:
  struct Profile {
    TopicQosMap<DDS_DataWriterQos> writers;
    TopicQosMap<DDS_DataReaderQos> readers;
  };
  using Key = std::pair<std::string, std::string>;  // library, profile

  template <class Qos>
  DDS_ReturnCode_t set(const char* context, const char* library, const char* profile, const char* topic_pattern,
                       const Qos& qos, TopicQosMap<Qos> Profile::*settings);
  template <class Qos>
  DDS_ReturnCode_t get(const char* context, Qos& qos, const char* library, const char* profile, const char* topic_name,
                       TopicQosMap<Qos> Profile::*settings);
  /// Under the lock.
  bool knows_library(const std::string& library) const;

  std::mutex mutex_;  // guards what follows; no log line is written under it, because sinks are the application's
  std::map<Key, Profile> profiles_;
};

}  // namespace dds
