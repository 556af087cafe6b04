#pragma once

#include <dds/dds.hpp>
#include <memory>
#include <string>
#include <vector>

#include "rtps/hub.hpp"

namespace rtps_test {

using dds::rtps::FrameKind;
using dds::rtps::Prefix;
using Frame = std::vector<unsigned char>;

/// A GUID that no real participant has.
DDS_GUID_t guid(unsigned char last);
/// A frame of that prefix, with its payload's size.
Frame make_frame(Prefix prefix, const Frame& payload = {});
/// A sample of a string, as the writer with that GUID sends it.
Frame string_sample(const DDS_GUID_t& writer, std::uint32_t number, const std::string& text);

/// A participant with a reader of each built-in type behind a hub that hears of a single other participant: the test,
/// which hands it whatever octets it likes.
class Receiver {
 public:
  Receiver();
  Receiver(const Receiver&) = delete;
  Receiver& operator=(const Receiver&) = delete;
  ~Receiver();

  /// Lets a new session begin, with writers 1 to 4 for the topics of strings, keyed strings, octets and keyed octets.
  /// The reader of octets holds four samples at the most, and has to be asked before.
  void begin_session();
  void receive(const Frame& frame) { hub_->on_packet(kChannel, frame.data(), frame.size()); }
  void receive_presence(const Frame& octets) { hub_->on_presence(kChannel, octets.data(), octets.size()); }
  DDS_LongLong malformed_messages() const { return hub_->statistics().malformed_messages; }
  /// Takes all samples of all readers, and returns those of the first.
  std::vector<std::string> take_strings();
  /// How many samples have been taken so far.
  int taken() const { return taken_; }

 private:
  static constexpr std::uint64_t kChannel = 1;  // stands for the engine's handle of the sender's writer

  template <class TypeSupport>
  void add_reader(const char* topic_name, DDS_Long max_samples);
  void send_hello();

  DDSDomainParticipant* const participant_;
  std::unique_ptr<dds::rtps::Hub> hub_;
  std::vector<DDSDataReader*> readers_;
  std::vector<std::pair<std::string, std::string>> topics_;
  std::vector<std::unique_ptr<dds::rtps::RtpsReader>> endpoints_;
  std::uint64_t session_ = 0;
  int taken_ = 0;
};

}  // namespace rtps_test
