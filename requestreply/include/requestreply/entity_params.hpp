#pragma once

#include <string>

#include <requestreply/export.hpp>

class DDSDomainParticipant;
class DDSPublisher;
class DDSSubscriber;
class DDSTypeSupport;
struct DDS_DataReaderQos;
struct DDS_DataWriterQos;

namespace zemtra {
namespace details {

/// What a requester or a replier is created from. Owns its strings; everything else is borrowed from the caller: the
/// QoS structures and the type supports until the entity has been created, the participant, publisher and subscriber
/// until the entity is gone. Not thread-safe, except that several threads may read.
///
/// A builder derives from it and fills the fields. A builder for repliers puts the reply's type support into the
/// writer's field and the request's into the reader's, since a replier writes replies and reads requests.
class ZEMTRA_EXPORT EntityParams {
 public:
  /// All else is empty or null. A null participant is reported by `validate`.
  explicit EntityParams(DDSDomainParticipant* participant);

  /// Throws `BadParameterException`, and logs, for the first of these that is wrong, in this order: there is a
  /// participant; there is either a service name or both topic names; the publisher, if any, and then the subscriber,
  /// if any, belong to the participant. QoS, profile names and type supports are not looked at.
  virtual void validate() const;
  virtual ~EntityParams();

  EntityParams(const EntityParams&) = default;
  EntityParams& operator=(const EntityParams&) = default;

  /// The participant in which the entity's topics, writer and reader are created.
  DDSDomainParticipant* participant() const;
  /// From which both topic names are derived; a topic name that is set goes before.
  const std::string& service_name() const;
  const std::string& request_topic_name() const;
  const std::string& reply_topic_name() const;
  /// Library and profile give the QoS where the caller gave no QoS structure; without a library the defaults apply.
  const std::string& qos_library_name() const;
  const std::string& qos_profile_name() const;
  /// The caller's own structure, or null. A change to it before the entity is created takes effect.
  const DDS_DataWriterQos* datawriter_qos() const;
  const DDS_DataReaderQos* datareader_qos() const;
  /// Where the writer and the reader are created; null for the participant's implicit ones.
  DDSPublisher* publisher() const;
  DDSSubscriber* subscriber() const;
  /// What the type-registration functions are given; may be null.
  DDSTypeSupport* datawriter_type_support() const;
  DDSTypeSupport* datareader_type_support() const;

 protected:
  DDSDomainParticipant* participant_;  // borrowed
  std::string service_name_;
  std::string request_topic_name_;
  std::string reply_topic_name_;
  std::string qos_library_name_;
  std::string qos_profile_name_;
  const DDS_DataWriterQos* datawriter_qos_ = nullptr;  // the caller's
  const DDS_DataReaderQos* datareader_qos_ = nullptr;  // the caller's
  DDSPublisher* publisher_ = nullptr;                  // borrowed
  DDSSubscriber* subscriber_ = nullptr;                // borrowed
  DDSTypeSupport* datawriter_type_support_ = nullptr;  // borrowed
  DDSTypeSupport* datareader_type_support_ = nullptr;  // borrowed
};

}  // namespace details

/// The builder for requesters: one chained setter for each value, in any order, the last call wins. The setters check
/// nothing. A QoS structure, once set, cannot be cleared.
///
/// QoS that is given takes the place of the defaults for request-reply (reliable, keep all, a write blocks for at most
/// 10 s) as a whole, also `DDS_DATAWRITER_QOS_DEFAULT` and `DDS_DATAREADER_QOS_DEFAULT`. A type without key has one
/// instance, so a keep-last history counts the samples of all requests together.
class ZEMTRA_EXPORT RequesterParams : public details::EntityParams {
 public:
  explicit RequesterParams(DDSDomainParticipant* participant);
  ~RequesterParams() override;

  RequesterParams(const RequesterParams&) = default;
  RequesterParams& operator=(const RequesterParams&) = default;

  using details::EntityParams::datareader_qos;
  using details::EntityParams::datawriter_qos;
  using details::EntityParams::participant;
  using details::EntityParams::publisher;
  using details::EntityParams::reply_topic_name;
  using details::EntityParams::request_topic_name;
  using details::EntityParams::service_name;
  using details::EntityParams::subscriber;

  RequesterParams& participant(DDSDomainParticipant* participant);
  RequesterParams& service_name(const std::string& service_name);
  RequesterParams& request_topic_name(const std::string& request_topic_name);
  RequesterParams& reply_topic_name(const std::string& reply_topic_name);
  /// Keeps the address of `qos`, which must stay valid until the requester has been created.
  RequesterParams& datawriter_qos(const DDS_DataWriterQos& qos);
  /// Keeps the address of `qos`, which must stay valid until the requester has been created.
  RequesterParams& datareader_qos(const DDS_DataReaderQos& qos);
  RequesterParams& qos_profile(const std::string& library, const std::string& profile);
  RequesterParams& publisher(DDSPublisher* publisher);
  RequesterParams& subscriber(DDSSubscriber* subscriber);
  /// Of the requests, which a requester writes.
  RequesterParams& request_type_support(DDSTypeSupport* type_support);
  /// Of the replies, which a requester reads.
  RequesterParams& reply_type_support(DDSTypeSupport* type_support);
};

}  // namespace zemtra
