#pragma once

#include <dds/domain_participant.hpp>

/// The process-wide maker of participants and keeper of QoS profiles. Thread-safe.
class DDS_EXPORT DDSDomainParticipantFactory {
 public:
  static DDSDomainParticipantFactory* get_instance();

  /// Joins a domain. Null, and a log line, on failure. `listener` must be null: participants have no statuses.
  virtual DDSDomainParticipant* create_participant(DDS_DomainId_t domain_id, const DDS_DomainParticipantQos& qos,
                                                   void* listener, DDS_StatusMask mask) = 0;
  /// `DDS_RETCODE_PRECONDITION_NOT_MET` while the participant holds an entity other than the implicit publisher and
  /// subscriber; `DDS_RETCODE_BAD_PARAMETER` for what is no participant of this factory.
  virtual DDS_ReturnCode_t delete_participant(DDSDomainParticipant* participant) = 0;

  /// Sets the writer QoS that a profile holds for the topic names that match `topic_pattern` (* any characters, ? one);
  /// null stands for all other topics. The library and the profile come into being with their first setting.
  /// `DDS_RETCODE_UNSUPPORTED` or `DDS_RETCODE_INCONSISTENT_POLICY` for QoS that a writer would be refused with,
  /// `DDS_RETCODE_BAD_PARAMETER` for a null or empty library or a null profile.
  virtual DDS_ReturnCode_t set_profile_datawriter_qos(const char* library, const char* profile,
                                                      const char* topic_pattern, const DDS_DataWriterQos& qos) = 0;
  virtual DDS_ReturnCode_t set_profile_datareader_qos(const char* library, const char* profile,
                                                      const char* topic_pattern, const DDS_DataReaderQos& qos) = 0;
  /// Forgets every library and profile.
  virtual void clear_profiles() = 0;
  /// The QoS of a profile for a topic name: that of the first pattern, in the order of setting, that matches, otherwise
  /// the profile's general setting, otherwise the layer's default. An unknown library or profile gives
  /// `DDS_RETCODE_BAD_PARAMETER` and a log line that names it.
  virtual DDS_ReturnCode_t get_datawriter_qos_from_profile(DDS_DataWriterQos& qos, const char* library,
                                                           const char* profile, const char* topic_name) = 0;
  virtual DDS_ReturnCode_t get_datareader_qos_from_profile(DDS_DataReaderQos& qos, const char* library,
                                                           const char* profile, const char* topic_name) = 0;

 protected:
  virtual ~DDSDomainParticipantFactory();
};
