#include <algorithm>
#include <set>
#include <vector>

#include <dds/builtin_topic_data.hpp>
#include <dds/data_reader.hpp>
#include <dds/data_writer.hpp>
#include <dds/topic.hpp>
#include <requestreply/exception.hpp>
#include <zemtra/details/service_match.hpp>

#include "match_conditions.hpp"
#include "replier_property.hpp"

namespace zemtra {
namespace details {

namespace {

using Role = ServiceMatch::Role;
using EndIds = std::set<std::string>;

/// The other ends that are matched on each topic, under names that an end has on both.
struct Ends {
  EndIds on_request_topic;
  EndIds on_reply_topic;
  EndIds also_on_reply_topic;  // further names of those on the reply topic

  int complete() const {
    const auto is_on_reply_topic = [this](const std::string& id) {
      return on_reply_topic.count(id) != 0 || also_on_reply_topic.count(id) != 0;
    };
    return static_cast<int>(std::count_if(on_request_topic.begin(), on_request_topic.end(), is_on_reply_topic));
  }
};

/// The data of those matched endpoints that are still there when asked for.
template <class Data, class Entity, class GetData>
std::vector<Data> data_of(Entity& entity, const DDS_InstanceHandleSeq& handles, GetData get_data) {
  std::vector<Data> all;
  for (int i = 0; i < handles.length(); ++i) {
    Data data;
    const DDS_ReturnCode_t retcode = (entity.*get_data)(data, handles[i]);
    if (retcode == DDS_RETCODE_BAD_PARAMETER) { continue; }  // gone meanwhile
    check_retcode(retcode, "ServiceMatch", QVX_LOG_GET_FAILURE_s, "data of a matched endpoint", false);
    all.push_back(std::move(data));
  }
  return all;
}

std::vector<DDS_SubscriptionBuiltinTopicData> matched_readers(DDSDataWriter& writer) {
  DDS_InstanceHandleSeq handles;
  check_retcode(writer.get_matched_subscriptions(handles), "ServiceMatch", QVX_LOG_GET_FAILURE_s,
                "matched subscriptions", false);
  return data_of<DDS_SubscriptionBuiltinTopicData>(writer, handles, &DDSDataWriter::get_matched_subscription_data);
}

std::vector<DDS_PublicationBuiltinTopicData> matched_writers(DDSDataReader& reader) {
  DDS_InstanceHandleSeq handles;
  check_retcode(reader.get_matched_publications(handles), "ServiceMatch", QVX_LOG_GET_FAILURE_s, "matched publications",
                false);
  return data_of<DDS_PublicationBuiltinTopicData>(reader, handles, &DDSDataReader::get_matched_publication_data);
}

std::string participant_name(const DDS_GUID_t& guid) { return "participant " + property_value(guid); }

const char* find_value(const DDS_PropertyQosPolicy& policy, const char* name) {
  const DDS_Property_t* property = DDSPropertyQosPolicyHelper::lookup_property(policy, name);
  return property == nullptr ? nullptr : property->value;
}

/// A replier is known by its writer's GUID, which its reader names. Repliers of which neither end says so are known by
/// their participant.
Ends find_repliers(DDSDataWriter& request_writer, DDSDataReader& reply_reader) {
  Ends ends;
  for (const auto& reader : matched_readers(request_writer)) {
    const char* named = find_value(reader.property, kReplyWriterProperty);
    ends.on_request_topic.insert(named == nullptr ? participant_name(reader.participant_key) : named);
  }
  for (const auto& writer : matched_writers(reply_reader)) {
    ends.on_reply_topic.insert(property_value(writer.key));
    if (find_value(writer.property, kNamedWriterProperty) == nullptr) {
      ends.also_on_reply_topic.insert(participant_name(writer.participant_key));
    }
  }
  return ends;
}

/// A requester is known by its writer's GUID: its reader asks for the replies to that writer.
Ends find_requesters(DDSDataReader& request_reader, DDSDataWriter& reply_writer) {
  Ends ends;
  for (const auto& writer : matched_writers(request_reader)) {
    ends.on_request_topic.insert(property_value(writer.key));
  }
  for (const auto& reader : matched_readers(reply_writer)) {
    ends.on_reply_topic.insert(property_value(reader.related_writer_guid));
  }
  return ends;
}

Ends find_ends(Role own_role, DDSDataWriter& writer, DDSDataReader& reader) {
  return own_role == Role::requester ? find_repliers(writer, reader) : find_requesters(reader, writer);
}

std::string quoted(const char* topic_name) { return '"' + std::string(topic_name) + '"'; }

std::string name_of(DDSTopicDescription* description) {
  DDSContentFilteredTopic* filtered = DDSContentFilteredTopic::narrow(description);
  return quoted(filtered == nullptr ? description->get_name() : filtered->get_related_topic()->get_name());
}

/// "no replier is", "1 replier is", "2 repliers are".
std::string counted(std::size_t count, const std::string& end) {
  if (count == 0) { return "no " + end + " is"; }
  return std::to_string(count) + ' ' + end + (count == 1 ? " is" : "s are");
}

template <class Status>
std::string refusal(const Status& status, const std::string& topic) {
  if (status.total_count == 0) { return {}; }
  return "; so far " + std::to_string(status.total_count) + (status.total_count == 1 ? " was" : " were") +
         " refused on " + topic + ", last because of the policy " + DDS_QosPolicyId_get_name(status.last_policy_id);
}

}  // namespace

int ServiceMatch::complete_ends() const { return find_ends(role_, writer_, reader_).complete(); }

bool ServiceMatch::wait(const Duration& timeout) const {
  const Deadline deadline(timeout);
  MatchConditions changes(writer_, reader_);
  while (true) {
    changes.reset();  // before looking, so that no match is missed in between
    if (complete_ends() > 0) { return true; }
    if (!changes.wait(deadline.remaining())) { return false; }
  }
}

std::string ServiceMatch::explain() const {
  const Ends ends = find_ends(role_, writer_, reader_);
  const bool is_requester = role_ == Role::requester;
  const std::string end = is_requester ? "replier" : "requester";
  const std::string writer_topic = quoted(writer_.get_topic()->get_name());
  const std::string reader_topic = name_of(reader_.get_topicdescription());
  const std::string& request_topic = is_requester ? writer_topic : reader_topic;
  const std::string& reply_topic = is_requester ? reader_topic : writer_topic;

  if (ends.complete() > 0) {
    return counted(static_cast<std::size_t>(ends.complete()), end) + " matched on " + request_topic + " and " +
           reply_topic;
  }
  DDS_OfferedIncompatibleQosStatus offered;
  check_retcode(writer_.get_offered_incompatible_qos_status(offered), "ServiceMatch::explain", QVX_LOG_GET_FAILURE_s,
                "offered incompatible QoS status", false);
  DDS_RequestedIncompatibleQosStatus requested;
  check_retcode(reader_.get_requested_incompatible_qos_status(requested), "ServiceMatch::explain",
                QVX_LOG_GET_FAILURE_s, "requested incompatible QoS status", false);
  std::string text = counted(ends.on_request_topic.size(), end) + " matched on " + request_topic + " and " +
                     counted(ends.on_reply_topic.size(), end) + " matched on " + reply_topic;
  if (!ends.on_request_topic.empty() && !ends.on_reply_topic.empty()) { text += ", but none on both"; }
  return text + refusal(offered, writer_topic) + refusal(requested, reader_topic);
}

}  // namespace details
}  // namespace zemtra
