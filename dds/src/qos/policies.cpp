#include <dds/qos.hpp>

#include <new>
#include <utility>

namespace {

/// A copy of a string that may be null; throws `std::bad_alloc`.
char* duplicate(const char* source) {
  char* copy = DDS_String_dup(source);
  if (copy == nullptr && source != nullptr) { throw std::bad_alloc(); }
  return copy;
}

template <class Qos>
DDS_ReturnCode_t copy_qos(Qos* destination, const Qos* source) {
  if (destination == nullptr || source == nullptr) { return DDS_RETCODE_BAD_PARAMETER; }
  try {
    Qos copy(*source);
    *destination = std::move(copy);
  } catch (const std::bad_alloc&) { return DDS_RETCODE_OUT_OF_RESOURCES; }
  return DDS_RETCODE_OK;
}

}  // namespace

// The copy constructors delegate, so that the destructor releases the first string when the second cannot be copied.

DDS_Property_t::DDS_Property_t(const DDS_Property_t& other) : DDS_Property_t() {
  name = duplicate(other.name);
  value = duplicate(other.value);
  propagate = other.propagate;
}

DDS_Property_t::DDS_Property_t(DDS_Property_t&& other) noexcept
    : name(std::exchange(other.name, nullptr)),
      value(std::exchange(other.value, nullptr)),
      propagate(other.propagate) {}

DDS_Property_t& DDS_Property_t::operator=(DDS_Property_t other) noexcept {
  std::swap(name, other.name);
  std::swap(value, other.value);
  propagate = other.propagate;
  return *this;
}

DDS_Property_t::~DDS_Property_t() {
  DDS_String_free(name);
  DDS_String_free(value);
}

DDS_EntityNameQosPolicy::DDS_EntityNameQosPolicy(const DDS_EntityNameQosPolicy& other) : DDS_EntityNameQosPolicy() {
  name = duplicate(other.name);
  role_name = duplicate(other.role_name);
}

DDS_EntityNameQosPolicy::DDS_EntityNameQosPolicy(DDS_EntityNameQosPolicy&& other) noexcept
    : name(std::exchange(other.name, nullptr)), role_name(std::exchange(other.role_name, nullptr)) {}

DDS_EntityNameQosPolicy& DDS_EntityNameQosPolicy::operator=(DDS_EntityNameQosPolicy other) noexcept {
  std::swap(name, other.name);
  std::swap(role_name, other.role_name);
  return *this;
}

DDS_EntityNameQosPolicy::~DDS_EntityNameQosPolicy() {
  DDS_String_free(name);
  DDS_String_free(role_name);
}

const char* DDS_QosPolicyId_get_name(DDS_QosPolicyId_t policy) {
  switch (policy) {
    case DDS_RELIABILITY_QOS_POLICY_ID:
      return "RELIABILITY";
    case DDS_TYPE_CONSISTENCY_ENFORCEMENT_QOS_POLICY_ID:
      return "TYPE_CONSISTENCY_ENFORCEMENT";
    case DDS_INVALID_QOS_POLICY_ID:
      break;
  }
  return "INVALID";
}

const DDS_DomainParticipantQos DDS_PARTICIPANT_QOS_DEFAULT;
const DDS_TopicQos DDS_TOPIC_QOS_DEFAULT;
const DDS_PublisherQos DDS_PUBLISHER_QOS_DEFAULT;
const DDS_SubscriberQos DDS_SUBSCRIBER_QOS_DEFAULT;
const DDS_DataWriterQos DDS_DATAWRITER_QOS_DEFAULT;
const DDS_DataReaderQos DDS_DATAREADER_QOS_DEFAULT;

DDS_ReturnCode_t DDS_DataWriterQos_copy(DDS_DataWriterQos* destination, const DDS_DataWriterQos* source) {
  return copy_qos(destination, source);
}

DDS_ReturnCode_t DDS_DataReaderQos_copy(DDS_DataReaderQos* destination, const DDS_DataReaderQos* source) {
  return copy_qos(destination, source);
}
