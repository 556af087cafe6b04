#include "rtps/frame.hpp"

#include <cstring>
#include <new>

#include "cache/message.hpp"
#include "rtps/octets.hpp"

namespace dds::rtps {

namespace {

constexpr std::uint8_t kVersion = 1;
// What stands before every payload on the wire: little-endian CDR.
constexpr unsigned char kEncapsulation[4] = {0, 1, 0, 0};

// Positions in the prefix; what lies between is zero.
constexpr std::size_t kAtVersion = 4;
constexpr std::size_t kAtKind = 5;
constexpr std::size_t kAtMessageKind = 6;
constexpr std::size_t kAtIdentity = 8;
constexpr std::size_t kAtRelated = 32;
constexpr std::size_t kAtTime = 56;
constexpr std::size_t kAtToken = 64;
constexpr std::size_t kAtPayloadSize = 72;

// The machine is little-endian, as the wire is.
template <class Number>
void put(unsigned char* octets, std::size_t position, Number value) {
  std::memcpy(octets + position, &value, sizeof(value));
}
template <class Number>
Number get(const unsigned char* octets, std::size_t position) {
  Number value;
  std::memcpy(&value, octets + position, sizeof(value));
  return value;
}

void put(unsigned char* octets, std::size_t position, const DDS_SampleIdentity_t& identity) {
  std::memcpy(octets + position, identity.writer_guid.value, 16);
  put(octets, position + 16, identity.sequence_number.high);
  put(octets, position + 20, identity.sequence_number.low);
}

DDS_SampleIdentity_t get_identity(const unsigned char* octets, std::size_t position) {
  DDS_SampleIdentity_t identity;
  std::memcpy(identity.writer_guid.value, octets + position, 16);
  identity.sequence_number.high = get<std::int32_t>(octets, position + 16);
  identity.sequence_number.low = get<std::uint32_t>(octets, position + 20);
  return identity;
}

bool is_kind(std::uint8_t kind) {
  return kind >= static_cast<std::uint8_t>(FrameKind::hello) && kind <= static_cast<std::uint8_t>(FrameKind::cancel);
}

}  // namespace

void encode(const Prefix& prefix, unsigned char* octets) {
  std::memset(octets, 0, kPrefixSize);
  std::memcpy(octets, kEncapsulation, sizeof(kEncapsulation));
  octets[kAtVersion] = kVersion;
  octets[kAtKind] = static_cast<unsigned char>(prefix.kind);
  octets[kAtMessageKind] = prefix.message_kind;
  put(octets, kAtIdentity, prefix.identity);
  put(octets, kAtRelated, prefix.related_identity);
  put(octets, kAtTime, prefix.source_time.sec);
  put(octets, kAtTime + 4, prefix.source_time.nanosec);
  put(octets, kAtToken, prefix.token);
  put(octets, kAtPayloadSize, prefix.payload_size);
}

void encode_number(const DDS_SequenceNumber_t& number, unsigned char* octets) {
  put(octets, kAtIdentity + 16, number.high);
  put(octets, kAtIdentity + 20, number.low);
}

void encode_kind(FrameKind kind, std::uint64_t token, unsigned char* octets) {
  octets[kAtKind] = static_cast<unsigned char>(kind);
  put(octets, kAtToken, token);
}

bool decode(Octets frame, Prefix& prefix, Octets& payload) {
  if (frame.size < kPrefixSize || std::memcmp(frame.data, kEncapsulation, sizeof(kEncapsulation)) != 0 ||
      frame.data[kAtVersion] != kVersion || !is_kind(frame.data[kAtKind]) ||
      frame.data[kAtMessageKind] > static_cast<std::uint8_t>(MessageKind::dispose_and_unregister)) {
    return false;
  }
  prefix.kind = static_cast<FrameKind>(frame.data[kAtKind]);
  prefix.message_kind = frame.data[kAtMessageKind];
  prefix.identity = get_identity(frame.data, kAtIdentity);
  prefix.related_identity = get_identity(frame.data, kAtRelated);
  prefix.source_time = {get<std::int32_t>(frame.data, kAtTime), get<std::uint32_t>(frame.data, kAtTime + 4)};
  prefix.token = get<std::uint64_t>(frame.data, kAtToken);
  prefix.payload_size = get<std::uint32_t>(frame.data, kAtPayloadSize);
  payload = {frame.data + kPrefixSize, prefix.payload_size};
  // The wire pads frames to a multiple of four octets.
  return prefix.payload_size <= frame.size - kPrefixSize && frame.size - kPrefixSize - prefix.payload_size < 4;
}

void encode(const Hello& hello, unsigned char* octets) {
  put(octets, 0, hello.session);
  put(octets, 8, hello.heard);
}

bool decode(Octets payload, Hello& hello) {
  if (payload.size != kHelloSize) { return false; }
  hello.session = get<std::uint64_t>(payload.data, 0);
  hello.heard = get<std::uint64_t>(payload.data, 8);
  return hello.session != 0;
}

namespace {

void encode_name(OctetWriter& writer, const DDS_EntityNameQosPolicy& name) {
  writer.optional_text(name.name);
  writer.optional_text(name.role_name);
}

void encode_properties(OctetWriter& writer, const DDS_PropertyQosPolicy& policy) {
  writer.number(static_cast<std::uint32_t>(policy.value.length()));
  for (int i = 0; i < policy.value.length(); ++i) {
    writer.optional_text(policy.value[i].name);
    writer.optional_text(policy.value[i].value);
  }
}

void decode_optional(OctetReader& reader, char*& text) {
  if (reader.number<std::uint8_t>() == 0 || !reader.good()) { return; }
  const std::string value = reader.text();
  if (DDS_String_replace(&text, value.c_str()) == nullptr) { throw std::bad_alloc(); }
}

void decode_name(OctetReader& reader, DDS_EntityNameQosPolicy& name) {
  decode_optional(reader, name.name);
  decode_optional(reader, name.role_name);
}

bool decode_properties(OctetReader& reader, DDS_PropertyQosPolicy& policy) {
  const auto count = reader.number<std::uint32_t>();
  // Each takes two octets at least, so that no more is allocated than has come.
  if (!reader.good() || count > reader.remaining() / 2) { return false; }
  const auto length = static_cast<int>(count);
  if (!policy.value.ensure_length(length, length)) { throw std::bad_alloc(); }
  for (int i = 0; i < length; ++i) {
    decode_optional(reader, policy.value[i].name);
    decode_optional(reader, policy.value[i].value);
    policy.value[i].propagate = true;
  }
  return reader.good();
}

constexpr std::uint8_t kReliable = 1;
constexpr std::uint8_t kBounded = 2;

}  // namespace

std::vector<unsigned char> encode(const Endpoint& endpoint) {
  std::vector<unsigned char> octets;
  OctetWriter writer(octets);
  writer.number(static_cast<std::uint8_t>((endpoint.reliable ? kReliable : 0) | (endpoint.bounded ? kBounded : 0)));
  writer.text(endpoint.topic_name);
  writer.text(endpoint.type_name);
  if (endpoint.publication != nullptr) {
    writer.guid(endpoint.publication->participant_key);
    encode_name(writer, endpoint.publication->publication_name);
    encode_properties(writer, endpoint.publication->property);
  } else {
    writer.guid(endpoint.subscription->participant_key);
    writer.guid(endpoint.subscription->related_writer_guid);
    encode_name(writer, endpoint.subscription->subscription_name);
    encode_properties(writer, endpoint.subscription->property);
  }
  return octets;
}

bool decode(Octets payload, bool is_writer, const DDS_GUID_t& guid, Endpoint& endpoint) {
  OctetReader reader(payload);
  const auto flags = reader.number<std::uint8_t>();
  endpoint.reliable = (flags & kReliable) != 0;
  endpoint.bounded = (flags & kBounded) != 0;
  endpoint.topic_name = reader.text();
  endpoint.type_name = reader.text();
  if (is_writer) {
    auto data = std::make_shared<DDS_PublicationBuiltinTopicData>();
    data->key = guid;
    data->participant_key = reader.guid();
    decode_name(reader, data->publication_name);
    if (!decode_properties(reader, data->property)) { return false; }
    endpoint.publication = std::move(data);
  } else {
    auto data = std::make_shared<DDS_SubscriptionBuiltinTopicData>();
    data->key = guid;
    data->participant_key = reader.guid();
    data->related_writer_guid = reader.guid();
    decode_name(reader, data->subscription_name);
    if (!decode_properties(reader, data->property)) { return false; }
    endpoint.subscription = std::move(data);
  }
  return reader.good() && reader.remaining() == 0 && !endpoint.topic_name.empty() && !endpoint.type_name.empty();
}

std::string to_text(const DDS_GUID_t& address) {
  constexpr char digits[] = "0123456789abcdef";
  std::string text;
  for (const DDS_Octet octet : address.value) {
    text += digits[octet >> 4];
    text += digits[octet & 15];
  }
  return text;
}

std::uint64_t topic_hash(const std::string& topic_name) {
  std::uint64_t hash = 0xcbf29ce484222325u;
  for (const char c : topic_name) { hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3u; }
  return hash;
}

std::vector<unsigned char> encode(const Presence& presence) {
  std::vector<unsigned char> octets(kEncapsulation, kEncapsulation + sizeof(kEncapsulation));
  OctetWriter writer(octets);
  writer.number(kVersion);
  writer.guid(presence.address);
  writer.number(static_cast<std::uint32_t>(presence.topics.size()));
  for (const Presence::Topic& topic : presence.topics) {
    writer.number(topic.hash);
    writer.number(topic.roles);
  }
  return octets;
}

bool decode(Octets octets, Presence& presence) {
  OctetReader reader(octets);
  if (reader.number<std::uint32_t>() != get<std::uint32_t>(kEncapsulation, 0) ||
      reader.number<std::uint8_t>() != kVersion) {
    return false;
  }
  presence.address = reader.guid();
  const auto count = reader.number<std::uint32_t>();
  constexpr std::size_t topic_size = 9;
  if (!reader.good() || count > reader.remaining() / topic_size) { return false; }
  presence.topics.resize(count);
  for (Presence::Topic& topic : presence.topics) {
    topic.hash = reader.number<std::uint64_t>();
    topic.roles = reader.number<std::uint8_t>();
  }
  return reader.good() && reader.remaining() < 4;
}

}  // namespace dds::rtps
