// Requesters and repliers.

#include <chrono>
#include <iostream>
#include <mutex>
#include <sstream>
#include <thread>
#include <vector>

#include "peer.hpp"

namespace peer {

namespace {

using namespace std::chrono_literals;
using Requester = zemtra::Requester<Message, Message>;
using Replier = zemtra::HandlerReplier<Message, Message>;

constexpr auto kLong = std::chrono::hours(1);

/// Which requests of a requester have come. They come in order, so the last number tells them all; what is missing or
/// comes twice is a fault.
class Seen {
 public:
  void add(const Message& request) {
    const std::lock_guard<std::mutex> lock(mutex_);
    Numbers& numbers = of_[request.requester];
    if (numbers.last != 0 && request.number != numbers.last + 1) { ++numbers.faults; }
    numbers.last = request.number;
  }
  std::string tell_and_forget(int requester) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const Numbers numbers = of_[requester];
    of_.erase(requester);
    return std::to_string(numbers.last) + ' ' + std::to_string(numbers.faults);
  }

 private:
  struct Numbers {
    int last = 0;
    int faults = 0;
  };
  std::mutex mutex_;
  std::map<int, Numbers> of_;
};

DDS_DataReaderQos reader_qos(int limit) {
  DDS_DataReaderQos qos;
  qos.reliability.kind = DDS_RELIABLE_RELIABILITY_QOS;
  qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
  qos.resource_limits.max_samples = limit;
  return qos;
}
DDS_DataWriterQos patient_writer_qos() {
  DDS_DataWriterQos qos;
  qos.reliability.max_blocking_time = DDS_DURATION_INFINITE;
  qos.history.kind = DDS_KEEP_ALL_HISTORY_QOS;
  return qos;
}

/// Sends numbered requests, so many ahead of the replies, and looks at what comes back.
class Stream {
 public:
  Stream(Requester& requester, const Options& options)
      : requester_(requester),
        id_(options.number("id", 1)),
        size_(options.number("size", 16)),
        ahead_(options.number("ahead", 1)),
        count_(options.number("count", 0)),
        telling_(options.number("telling", 0) != 0) {}

  /// Until as many as wanted have been sent, or `stop`, and the last one has been answered.
  void run() {
    bool stalled = false;
    while (!ended()) {
      while (!full() && (stalled || sent_ - last_answered_ < ahead_)) {
        send();
        stalled = false;
      }
      // A replier that has died answers no more; a later one answers later requests.
      stalled = !receive(100ms);
    }
    while (receive(20ms)) {}
  }
  void stop() { stopping_ = true; }
  int answered() const { return answered_; }
  std::string summary() const {
    return std::to_string(sent_) + ' ' + std::to_string(answered_) + ' ' + std::to_string(faults_);
  }

 private:
  bool full() const { return stopping_ ? sent_ >= last_ : count_ != 0 && sent_ >= count_; }
  // One request more once it is to stop: when that is answered, all have been that will be.
  bool ended() {
    if (stopping_ && last_ == 0) { last_ = sent_ + 1; }
    return full() && last_answered_ >= sent_;
  }
  void send() {
    ++sent_;
    requester_.send_request({id_, sent_, payload(sent_, size_)});
  }
  bool receive(zemtra::Duration max_wait) {
    const auto reply = requester_.receive_reply(max_wait);
    if (!reply.has_value()) { return false; }
    const Message& message = reply->data();
    const auto index = static_cast<std::size_t>(message.number);
    if (was_answered_.size() <= index) { was_answered_.resize(index + 1); }
    const bool known = message.requester == id_ && message.number > 0 && message.number <= sent_;
    if (!known || was_answered_[index] || message.payload != payload(message.number, size_)) { ++faults_; }
    was_answered_[index] = true;
    last_answered_ = std::max(last_answered_, message.number);
    ++answered_;
    if (telling_) { say("reply " + std::to_string(message.number)); }
    return true;
  }

  Requester& requester_;
  const int id_, size_, ahead_, count_;
  const bool telling_;
  std::atomic<bool> stopping_{false};
  std::atomic<int> answered_{0};
  int sent_ = 0;
  int last_ = 0;
  int last_answered_ = 0;
  int faults_ = 0;
  std::vector<bool> was_answered_;
};

}  // namespace

void run_replier(const Options& options, DDSDomainParticipant* participant) {
  Seen seen;
  const Replier replier(participant, options.text("service"), [&](const Message& request) {
    seen.add(request);
    return request;
  });
  say("ready");
  for (std::string line; std::getline(std::cin, line);) {
    std::istringstream words(line);
    std::string question;
    int number = 0;
    words >> question >> number;
    if (question == "seen") { say("seen " + seen.tell_and_forget(number)); }
    if (question == "others") { say("others " + std::to_string(replier.matched_requesters())); }
    if (question == "heap") { say("heap " + std::to_string(heap_in_use())); }
  }
}

void run_requester(const Options& options, DDSDomainParticipant* participant) {
  Requester requester(participant, options.text("service"));
  Stream stream(requester, options);
  std::thread orders([&] {
    for (std::string line; std::getline(std::cin, line);) {
      if (line == "answered") { say("answered " + std::to_string(stream.answered())); }
      if (line == "others") { say("others " + std::to_string(requester.matched_repliers())); }
      if (line == "heap") { say("heap " + std::to_string(heap_in_use())); }
      if (line == "stop") { stream.stop(); }
    }
  });
  if (options.text("begin") == "writer") {
    await_readers(requester.request_datawriter(), 1);
  } else if (!requester.wait_for_service(kLong)) {
    fail("no service: " + requester.explain());
  }
  say("begun");
  stream.run();
  if (requester.discarded_replies() != 0) { fail("replies are discarded"); }
  say("done " + stream.summary());
  orders.join();
}

// Serves one service and uses another, both at once and with small or unlimited readers on all sides. The handler
// writes from a listener and may wait for room, which the thread that takes the replies makes at the other end.
void run_duplex(const Options& options, DDSDomainParticipant* participant) {
  const int count = options.number("count", 1);
  const int size = options.number("size", 16);
  const DDS_DataReaderQos reader = reader_qos(options.number("limit", DDS_LENGTH_UNLIMITED));
  const DDS_DataWriterQos writer = patient_writer_qos();
  const Replier replier(zemtra::ReplierParams(participant)
                            .service_name(options.text("serves"))
                            .datareader_qos(reader)
                            .datawriter_qos(writer),
                        [](const Message& request) { return request; });
  Requester requester(zemtra::RequesterParams(participant)
                          .service_name(options.text("uses"))
                          .datareader_qos(reader)
                          .datawriter_qos(writer));
  if (!requester.wait_for_service(kLong)) { fail("no service: " + requester.explain()); }
  std::thread sender([&] {
    for (int i = 1; i <= count; ++i) { requester.send_request({1, i, payload(i, size)}); }
  });
  int faults = 0;
  for (int i = 1; i <= count; ++i) {
    const auto reply = requester.receive_reply(kLong);
    const bool expected = reply->data().number == i && reply->data().payload == payload(i, size);
    faults += expected ? 0 : 1;
  }
  sender.join();
  say("done " + std::to_string(faults));
  for (std::string line; std::getline(std::cin, line);) {}
}

}  // namespace peer
