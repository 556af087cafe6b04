// What comes in from other participants: frames of any octets, among them samples of the built-in types. An input is a
// sequence of frames, each after two octets of length; a participant that has said hello sends them.

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "allocated.hpp"
#include "rtps/receiver.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size);

namespace {

// An octet of an announcement becomes at the most half a property; a frame makes an endpoint with its matches.
constexpr std::size_t kPerOctet = 64;
constexpr std::size_t kPerFrame = 16384;

void receive(rtps_test::Receiver& receiver, const rtps_test::Frame& frame) {
  const std::size_t before = fuzz::allocated();
  receiver.receive(frame);
  if (fuzz::allocated() - before > frame.size() * kPerOctet + kPerFrame) {
    std::fprintf(stderr, "FAILED: receiving allocates little\n");
    std::abort();
  }
  receiver.receive_presence(frame);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size) {
  static auto* const receiver = [] {
    DDSLog_set_sink([](void*, int, const char*, int, const char*, const QVXLogMessage*, const char*) {}, nullptr);
    return new rtps_test::Receiver;  // never destroyed: its threads may run to the end
  }();
  receiver->begin_session();
  while (size >= 2) {
    const std::size_t length = std::min(octets[0] + std::size_t{256} * octets[1], size - 2);
    // A copy of its own, so that reading beyond it is seen.
    receive(*receiver, rtps_test::Frame(octets + 2, octets + 2 + length));
    octets += 2 + length;
    size -= 2 + length;
  }
  receiver->take_strings();
  return 0;
}
