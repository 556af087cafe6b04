#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <dds/identity.hpp>
#include <dds/time.hpp>
#include <string>
#include <vector>

#include "transport/endpoint_data.hpp"

// What two participants say to each other: frames, each of a prefix of fixed size and what follows it. Numbers are
// little-endian. Whatever comes in is looked at octet by octet; nothing is believed.

namespace dds::rtps {

enum class FrameKind : std::uint8_t {
  hello = 1,        // who the sender is, and whether it hears the receiver
  writer = 2,       // there is this writer
  reader = 3,       // there is this reader
  withdrawn = 4,    // an endpoint has gone
  sample = 5,       // a sample
  reservation = 6,  // a sample that wants a place in readers that may be full
  placed = 7,       // it has its place
  waits = 8,        // it has none yet
  commit = 9,       // it is to be delivered
  cancel = 10,      // it is not
};

/// Octets before what a frame carries. The samples of the built-in types carry their octets 8 further on, which is
/// where they are aligned to 32 octets: copying is many times slower when the two sides are aligned differently.
constexpr std::size_t kPrefixSize = 88;

struct Prefix {
  FrameKind kind = FrameKind::hello;
  std::uint8_t message_kind = 0;              // of samples: a `MessageKind`
  DDS_SampleIdentity_t identity;              // of the sample; otherwise its GUID alone counts, and names the subject
  DDS_SampleIdentity_t related_identity;      // of samples
  DDS_Time_t source_time = DDS_TIME_INVALID;  // of samples
  std::uint64_t token = 0;                    // of reservations: names it among those of the sender
  std::uint32_t payload_size = 0;
};

/// Octets that lie elsewhere.
struct Octets {
  const unsigned char* data = nullptr;
  std::size_t size = 0;
};

/// Writes the prefix into `kPrefixSize` octets.
void encode(const Prefix& prefix, unsigned char* octets);
/// Changes an encoded prefix.
void encode_number(const DDS_SequenceNumber_t& number, unsigned char* octets);
void encode_kind(FrameKind kind, std::uint64_t token, unsigned char* octets);
/// False when the octets are no frame of this version, or end before its payload does.
bool decode(Octets frame, Prefix& prefix, Octets& payload);

struct Hello {
  std::uint64_t session = 0;  // of the sender with the receiver
  std::uint64_t heard = 0;    // the receiver's session that the sender knows; 0 for none
};
constexpr std::size_t kHelloSize = 16;
void encode(const Hello& hello, unsigned char* octets);
bool decode(Octets payload, Hello& hello);

/// What an endpoint says of itself, but for the GUID.
struct Endpoint {
  std::string topic_name;
  std::string type_name;
  bool reliable = false;
  bool bounded = false;           // of a reader: it may be full
  PublicationData publication;    // of a writer
  SubscriptionData subscription;  // of a reader
};
/// Throws `std::bad_alloc`.
std::vector<unsigned char> encode(const Endpoint& endpoint);
/// The endpoint with that GUID. False when the octets are none. Throws `std::bad_alloc`.
bool decode(Octets payload, bool is_writer, const DDS_GUID_t& guid, Endpoint& endpoint);

/// What a participant says to all: where it is found, and the topics that it writes and reads, as hashes.
struct Presence {
  DDS_GUID_t address;
  struct Topic {
    std::uint64_t hash;
    std::uint8_t roles;
  };
  static constexpr std::uint8_t kWrites = 1;
  static constexpr std::uint8_t kReads = 2;
  std::vector<Topic> topics;
};
/// The engine's name for the place where a participant receives.
std::string to_text(const DDS_GUID_t& address);
std::uint64_t topic_hash(const std::string& topic_name);
/// Throws `std::bad_alloc`.
std::vector<unsigned char> encode(const Presence& presence);
bool decode(Octets octets, Presence& presence);

}  // namespace dds::rtps
