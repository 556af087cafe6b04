#pragma once

#include <dds/entity.hpp>
#include <dds/qos.hpp>

class DDSDomainParticipant;

/// What a reader can be created on. A participant holds at most one of a name. Belongs to its participant.
class DDS_EXPORT DDSTopicDescription {
 public:
  /// Valid as long as the description.
  virtual const char* get_name() = 0;
  virtual const char* get_type_name() = 0;
  virtual DDSDomainParticipant* get_participant() = 0;

 protected:
  virtual ~DDSTopicDescription();
};

class DDS_EXPORT DDSTopic : public DDSTopicDescription, public DDSEntity {
 public:
  /// The description as a topic, or null if it is null or of another kind.
  static DDSTopic* narrow(DDSTopicDescription* description);
  virtual DDS_ReturnCode_t get_qos(DDS_TopicQos& qos) = 0;

 protected:
  ~DDSTopic() override;
};

/// A topic seen through a filter. The filter language has comparisons (=, <>, !=, <, <=, >, >=), AND, OR, NOT,
/// parentheses and the parameters %0, %1…, over the sample's meta-data and the string members of built-in types:
///   @sample_identity.writer_guid.value and @related_sample_identity.writer_guid.value, compared with &hex(32
///   hexadecimal digits) by = and <>;
///   @sample_identity.sequence_number and @related_sample_identity.sequence_number, compared with integers;
///   value (string and keyed string types) and key (keyed types), compared with 'text' octet by octet.
/// Writers with many readers find those that compare @related_sample_identity.writer_guid.value for equality, alone, by
/// hashing; other filters are evaluated one by one for each sample.
class DDS_EXPORT DDSContentFilteredTopic : public DDSTopicDescription {
 public:
  /// The description as a content-filtered topic, or null if it is null or of another kind.
  static DDSContentFilteredTopic* narrow(DDSTopicDescription* description);
  virtual DDSTopic* get_related_topic() = 0;
  /// Valid as long as the description.
  virtual const char* get_filter_expression() = 0;
  virtual DDS_ReturnCode_t get_expression_parameters(DDS_StringSeq& parameters) = 0;

 protected:
  ~DDSContentFilteredTopic() override;
};
