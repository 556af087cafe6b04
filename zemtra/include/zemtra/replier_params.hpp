#pragma once

#include <requestreply/entity_params.hpp>

namespace zemtra {

/// The builder for repliers: one chained setter for each value, in any order, the last call wins. The setters check
/// nothing. A QoS structure, once set, cannot be cleared.
///
/// QoS that is given takes the place of the defaults for request-reply (reliable, keep all, a write blocks for at most
/// 10 s) as a whole, also `DDS_DATAWRITER_QOS_DEFAULT` and `DDS_DATAREADER_QOS_DEFAULT`. A type without key has one
/// instance, so a keep-last history counts the samples of all requests together.
class ReplierParams : public details::EntityParams {
 public:
  explicit ReplierParams(DDSDomainParticipant* participant) : EntityParams(participant) {}

  using details::EntityParams::datareader_qos;
  using details::EntityParams::datawriter_qos;
  using details::EntityParams::participant;
  using details::EntityParams::publisher;
  using details::EntityParams::reply_topic_name;
  using details::EntityParams::request_topic_name;
  using details::EntityParams::service_name;
  using details::EntityParams::subscriber;

  ReplierParams& participant(DDSDomainParticipant* participant) {
    participant_ = participant;
    return *this;
  }
  ReplierParams& service_name(const std::string& service_name) {
    service_name_ = service_name;
    return *this;
  }
  ReplierParams& request_topic_name(const std::string& request_topic_name) {
    request_topic_name_ = request_topic_name;
    return *this;
  }
  ReplierParams& reply_topic_name(const std::string& reply_topic_name) {
    reply_topic_name_ = reply_topic_name;
    return *this;
  }
  /// Of the replies' writer. Keeps the address of `qos`, which must stay valid until the replier has been created.
  ReplierParams& datawriter_qos(const DDS_DataWriterQos& qos) {
    datawriter_qos_ = &qos;
    return *this;
  }
  /// Of the requests' reader. Keeps the address of `qos`, which must stay valid until the replier has been created.
  ReplierParams& datareader_qos(const DDS_DataReaderQos& qos) {
    datareader_qos_ = &qos;
    return *this;
  }
  ReplierParams& qos_profile(const std::string& library, const std::string& profile) {
    qos_library_name_ = library;
    qos_profile_name_ = profile;
    return *this;
  }
  ReplierParams& publisher(DDSPublisher* publisher) {
    publisher_ = publisher;
    return *this;
  }
  ReplierParams& subscriber(DDSSubscriber* subscriber) {
    subscriber_ = subscriber;
    return *this;
  }
  /// Of the requests, which a replier reads.
  ReplierParams& request_type_support(DDSTypeSupport* type_support) {
    datareader_type_support_ = type_support;
    return *this;
  }
  /// Of the replies, which a replier writes.
  ReplierParams& reply_type_support(DDSTypeSupport* type_support) {
    datawriter_type_support_ = type_support;
    return *this;
  }
};

}  // namespace zemtra
