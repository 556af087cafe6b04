#pragma once

#include <dds/publisher.hpp>
#include <dds/subscriber.hpp>
#include <dds/type_plugin.hpp>

/// An application's membership in a domain; creates and owns everything else. Thread-safe. Creating returns null, and
/// logs why, on failure: an argument that is null or another participant's, QoS that is refused, exhausted memory.
class DDS_EXPORT DDSDomainParticipant : public DDSEntity {
 public:
  virtual DDS_DomainId_t get_domain_id() = 0;
  /// Registers a copy of `plugin`. Registering the same plugin under its name again succeeds; another plugin under a
  /// name in use gives `DDS_RETCODE_PRECONDITION_NOT_MET`. Two participants of one process that have registered
  /// different plugins under one name do not exchange samples of it.
  virtual DDS_ReturnCode_t register_type(const char* type_name, const DDS_TypePlugin& plugin) = 0;

  /// Creates a topic of a registered type. Null also when a topic description of the name exists. `listener` must be
  /// null: topics have no statuses.
  virtual DDSTopic* create_topic(const char* topic_name, const char* type_name, const DDS_TopicQos& qos, void* listener,
                                 DDS_StatusMask mask) = 0;
  /// `DDS_RETCODE_PRECONDITION_NOT_MET` while a reader, a writer or a content-filtered topic uses the topic, or for
  /// another participant's.
  virtual DDS_ReturnCode_t delete_topic(DDSTopic* topic) = 0;
  /// Creates a content-filtered topic over a topic of this participant. Null also when a description of the name
  /// exists, or when the expression is wrong; the log line then points at the character.
  virtual DDSContentFilteredTopic* create_contentfilteredtopic(const char* name, DDSTopic* related_topic,
                                                               const char* filter_expression,
                                                               const DDS_StringSeq& expression_parameters) = 0;
  /// `DDS_RETCODE_BAD_PARAMETER` for null, `DDS_RETCODE_PRECONDITION_NOT_MET` while a reader uses it.
  virtual DDS_ReturnCode_t delete_contentfilteredtopic(DDSContentFilteredTopic* topic) = 0;
  /// This participant's own description of that name, or null. Does not wait.
  virtual DDSTopicDescription* lookup_topicdescription(const char* name) = 0;

  virtual DDSPublisher* create_publisher(const DDS_PublisherQos& qos, void* listener, DDS_StatusMask mask) = 0;
  /// `DDS_RETCODE_PRECONDITION_NOT_MET` while it holds a writer.
  virtual DDS_ReturnCode_t delete_publisher(DDSPublisher* publisher) = 0;
  virtual DDSSubscriber* create_subscriber(const DDS_SubscriberQos& qos, void* listener, DDS_StatusMask mask) = 0;
  /// `DDS_RETCODE_PRECONDITION_NOT_MET` while it holds a reader.
  virtual DDS_ReturnCode_t delete_subscriber(DDSSubscriber* subscriber) = 0;
  /// The publisher and subscriber behind the four functions below; made when first asked for, deleted with the
  /// participant.
  virtual DDSPublisher* get_implicit_publisher() = 0;
  virtual DDSSubscriber* get_implicit_subscriber() = 0;

  /// Creates a writer in the implicit publisher. `DDS_DATAWRITER_QOS_DEFAULT` stands for the participant's default for
  /// the topic's name.
  virtual DDSDataWriter* create_datawriter(DDSTopic* topic, const DDS_DataWriterQos& qos,
                                           DDSDataWriterListener* listener, DDS_StatusMask mask) = 0;
  /// `DDS_RETCODE_PRECONDITION_NOT_MET` while the writer has match conditions, for a writer that is not of the implicit
  /// publisher, or from one of its own listener calls.
  virtual DDS_ReturnCode_t delete_datawriter(DDSDataWriter* writer) = 0;
  /// Creates a reader in the implicit subscriber, on a topic or a content-filtered topic.
  virtual DDSDataReader* create_datareader(DDSTopicDescription* topic, const DDS_DataReaderQos& qos,
                                           DDSDataReaderListener* listener, DDS_StatusMask mask) = 0;
  /// `DDS_RETCODE_PRECONDITION_NOT_MET` while the reader has outstanding loans, read or match conditions, for a reader
  /// that is not of the implicit subscriber, or from one of its own listener calls.
  virtual DDS_ReturnCode_t delete_datareader(DDSDataReader* reader) = 0;
  /// Deletes everything that the participant holds, as far as no loan is outstanding.
  virtual DDS_ReturnCode_t delete_contained_entities() = 0;

  virtual DDS_ReturnCode_t get_default_topic_qos(DDS_TopicQos& qos) = 0;
  virtual DDS_ReturnCode_t set_default_topic_qos(const DDS_TopicQos& qos) = 0;
  virtual DDS_ReturnCode_t get_default_datawriter_qos(DDS_DataWriterQos& qos) = 0;
  virtual DDS_ReturnCode_t set_default_datawriter_qos(const DDS_DataWriterQos& qos) = 0;
  virtual DDS_ReturnCode_t get_default_datareader_qos(DDS_DataReaderQos& qos) = 0;
  virtual DDS_ReturnCode_t set_default_datareader_qos(const DDS_DataReaderQos& qos) = 0;
  /// The default for a topic name: that of the first pattern, in the order of setting, that matches the name, otherwise
  /// the general one.
  virtual DDS_ReturnCode_t get_default_datawriter_qos(DDS_DataWriterQos& qos, const char* topic_name) = 0;
  virtual DDS_ReturnCode_t get_default_datareader_qos(DDS_DataReaderQos& qos, const char* topic_name) = 0;
  /// Sets the default for the topic names that match `topic_pattern`, in which * stands for any characters and ? for
  /// one.
  virtual DDS_ReturnCode_t set_default_datawriter_qos(const DDS_DataWriterQos& qos, const char* topic_pattern) = 0;
  virtual DDS_ReturnCode_t set_default_datareader_qos(const DDS_DataReaderQos& qos, const char* topic_pattern) = 0;

  /// The time of the machine's real-time clock.
  virtual DDS_ReturnCode_t get_current_time(DDS_Time_t& time) = 0;
  virtual DDS_ReturnCode_t get_transport_statistics(DDS_TransportStatistics& statistics) = 0;

 protected:
  ~DDSDomainParticipant() override;
};
