// Includes nothing of the DDS layer: the engine's headers define macros of the same names.
#include "hand_written/ping_pong.hpp"

#include <dds/dds.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "message.h"
#include "support/tag.hpp"

namespace bench::hand_written {
namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t most_at_once = 32;

// Of a call that must succeed.
dds_return_t check(dds_return_t result, const char* call) {
  if (result < 0) { fail((std::string(call) + ": " + dds_strretcode(-result)).c_str()); }
  return result;
}

// The system gives no more than it allows, and the engine is not content with less than it was told to get.
std::string receive_buffer() {
  constexpr int wanted = 4 * 1024 * 1024;
  int given = 2 * wanted;  // the kernel counts its own bookkeeping, too
  socklen_t size = sizeof given;
  const int probe = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  setsockopt(probe, SOL_SOCKET, SO_RCVBUF, &wanted, sizeof wanted);
  getsockopt(probe, SOL_SOCKET, SO_RCVBUF, &given, &size);
  close(probe);
  return std::to_string(std::min(wanted, given / 2)) + "B";
}

// Half of that makes the engine ask for acknowledgements, all of it makes a writer wait.
constexpr const char* most_unacknowledged = "2MiB";
// A listener must never wait: it is the engine's receiving thread that acknowledgements come in on.
constexpr const char* most_for_listener = "16MiB";

// As the transport of the library has it (dds/src/rtps/engine.cpp), with the lease of the other benchmarks.
std::string configuration(int domain, const std::string& most) {
  const std::string buffer = receive_buffer();
  return R"(<Domain id="any"><General><Interfaces><NetworkInterface name="lo" multicast="true"/></Interfaces>
    <AllowMulticast>spdp</AllowMulticast><MaxMessageSize>65500B</MaxMessageSize><FragmentSize>65000B</FragmentSize>
    </General><Discovery><ExternalDomainId>)" +
         std::to_string(domain) +
         R"(</ExternalDomainId><ParticipantIndex>none</ParticipantIndex><LeaseDuration>20s</LeaseDuration></Discovery>
    <Internal><SocketSendBufferSize min="default" max="1MiB"/><SocketReceiveBufferSize min=")" +
         buffer + R"(" max=")" + buffer + R"("/>
    <Watermarks><WhcAdaptive>false</WhcAdaptive><WhcLow>0B</WhcLow><WhcHigh>)" +
         most + "</WhcHigh><WhcHighInit>" + most + R"(</WhcHighInit></Watermarks>
    <HeartbeatInterval min="0s" minsched="10ms" max="1s">10ms</HeartbeatInterval><NackDelay>5ms</NackDelay>
    <AckDelay>1ms</AckDelay></Internal></Domain>)";
}

/// Samples that a reader has lent.
class Loan {
 public:
  explicit Loan(dds_entity_t reader) : reader_(reader) {
    count_ = check(dds_take(reader, samples_, infos_, most_at_once, most_at_once), "dds_take");
  }
  ~Loan() {
    if (count_ > 0) { check(dds_return_loan(reader_, samples_, count_), "dds_return_loan"); }
  }
  Loan(const Loan&) = delete;
  Loan& operator=(const Loan&) = delete;

  bool is_full() const { return count_ == static_cast<dds_return_t>(most_at_once); }
  /// Calls `use` with each message.
  template <class Use>
  void for_each(Use use) const {
    for (dds_return_t i = 0; i < count_; ++i) {
      if (infos_[i].valid_data) { use(*static_cast<const hand_written_Message*>(samples_[i])); }
    }
  }

 private:
  const dds_entity_t reader_;
  void* samples_[most_at_once] = {};  // null: the reader is to lend
  dds_sample_info_t infos_[most_at_once];
  dds_return_t count_;
};

/// A participant with a writer of one topic and a reader of the other.
class End {
 public:
  End(int domain, const char* written, const char* read, dds_on_data_available_fn on_data, void* argument,
      const char* most = most_unacknowledged)
      : domain_(check(dds_create_domain(static_cast<dds_domainid_t>(domain), configuration(domain, most).c_str()),
                      "domain")),
        participant_(check(dds_create_participant(static_cast<dds_domainid_t>(domain), nullptr, nullptr),
                           "dds_create_participant")) {
    dds_qos_t* const qos = dds_create_qos();
    dds_qset_reliability(qos, DDS_RELIABILITY_RELIABLE, DDS_SECS(10));
    dds_qset_history(qos, DDS_HISTORY_KEEP_ALL, 0);
    writer = check(dds_create_writer(participant_, topic(written), qos, nullptr), "dds_create_writer");
    dds_listener_t* const listener = dds_create_listener(argument);
    dds_lset_data_available(listener, on_data);
    reader = check(dds_create_reader(participant_, topic(read), qos, listener), "dds_create_reader");
    dds_delete_listener(listener);
    dds_delete_qos(qos);
  }
  ~End() {
    dds_delete(participant_);
    dds_delete(domain_);
  }
  End(const End&) = delete;
  End& operator=(const End&) = delete;

  void write(const hand_written_Message& message) const { check(dds_write(writer, &message), "dds_write"); }

  dds_entity_t writer = 0;
  dds_entity_t reader = 0;

 private:
  dds_entity_t topic(const char* name) const {
    return check(dds_create_topic(participant_, &hand_written_Message_desc, name, nullptr, nullptr),
                 "dds_create_topic");
  }

  const dds_entity_t domain_;
  const dds_entity_t participant_;
};

/// How the engine's thread wakes one of the application.
class Arrival {
 public:
  void tell() {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      arrived_ = true;
    }
    told_.notify_one();
  }
  void wait() {
    std::unique_lock<std::mutex> lock(mutex_);
    told_.wait(lock, [this] { return arrived_; });
    arrived_ = false;
  }
  bool wait_for(std::chrono::milliseconds most) {
    std::unique_lock<std::mutex> lock(mutex_);
    if (!told_.wait_for(lock, most, [this] { return arrived_; })) { return false; }
    arrived_ = false;
    return true;
  }
  static void on_data(dds_entity_t /*reader*/, void* arrival) { static_cast<Arrival*>(arrival)->tell(); }

 private:
  std::mutex mutex_;
  std::condition_variable told_;
  bool arrived_ = false;  // guarded by mutex_
};

/// Sends requests back; false once one carried the stop tag.
bool answer_available(const End& end, dds_entity_t reader) {
  bool go_on = true;
  for (bool more = true; more;) {
    const Loan requests(reader);
    requests.for_each([&](const hand_written_Message& request) {
      if (tag_of(request.payload._buffer) == stop_tag) {
        go_on = false;
      } else {
        end.write(request);
      }
    });
    more = requests.is_full();
  }
  return go_on;
}

/// Answers in the engine's thread.
class ListenerEcho {
 public:
  explicit ListenerEcho(int domain)
      : end_(domain, "hand_written_reply", "hand_written_request", on_data, this, most_for_listener) {
    created_.tell();
  }
  void wait_for_stop() { stop_.wait(); }

 private:
  static void on_data(dds_entity_t reader, void* argument) {
    auto* const echo = static_cast<ListenerEcho*>(argument);
    // The first request may come before the constructor has ended.
    if (!echo->ready_) {
      echo->created_.wait();
      echo->ready_ = true;
    }
    if (!answer_available(echo->end_, reader)) { echo->stop_.tell(); }
  }

  Arrival created_;
  Arrival stop_;
  bool ready_ = false;  // the listener's
  const End end_;
};

}  // namespace

class Requester::Impl {
 public:
  Impl(int domain, std::size_t payload)
      : payload_(payload, 0x5a),
        end_(domain, "hand_written_request", "hand_written_reply", Arrival::on_data, &arrival_) {
    message_.client = static_cast<std::uint64_t>(getpid());
    message_.payload._buffer = payload_.data();
    message_.payload._length = message_.payload._maximum = static_cast<std::uint32_t>(payload);
  }

  // A replier that has not found this end's reader yet answers into nothing.
  void wait_for_replier() {
    const auto end = std::chrono::steady_clock::now() + 20s;
    while (received_ == 0) {
      if (std::chrono::steady_clock::now() > end) { fail("the hand-written replier does not answer"); }
      send();
      if (arrival_.wait_for(100ms)) { take(); }
    }
    // What is still to be answered would disturb.
    while (received_ != message_.sequence_number) {
      arrival_.wait();
      take();
    }
  }

  void run_blocking(long count) {
    for (long i = 0; i < count; ++i) {
      send();
      while (received_ != message_.sequence_number) {
        arrival_.wait();
        take();
      }
    }
  }

  void run_pipelined(long count, long window) {
    long to_send = count;
    for (; to_send > std::max(0L, count - window); --to_send) { send(); }
    for (long to_receive = count; to_receive > 0;) {
      arrival_.wait();
      const long arrived = take();
      to_receive -= arrived;
      for (const long rest = to_send - std::min(arrived, to_send); to_send > rest; --to_send) { send(); }
    }
  }

  void send_stop() { write(stop_tag); }

 private:
  void send() { write(++message_.sequence_number); }
  void write(std::uint64_t tag) {
    std::copy_n(reinterpret_cast<const unsigned char*>(&tag), sizeof tag, payload_.data());
    end_.write(message_);
  }
  // What is there; returns how many replies. Those of other requesters are none.
  long take() {
    long taken = 0;
    for (bool more = true; more;) {
      const Loan replies(end_.reader);
      replies.for_each([&](const hand_written_Message& reply) {
        if (reply.client != message_.client) { return; }
        if (reply.payload._length != payload_.size()) { fail("not the reply that was sent"); }
        check_tag(tag_of(reply.payload._buffer), reply.sequence_number);
        if (received_ > 0) { check_tag(reply.sequence_number, received_ + 1); }
        received_ = reply.sequence_number;
        ++taken;
      });
      more = replies.is_full();
    }
    return taken;
  }

  std::vector<unsigned char> payload_;
  hand_written_Message message_{};
  std::uint64_t received_ = 0;  // sequence number of the last reply
  Arrival arrival_;
  const End end_;
};

Requester::Requester(int domain, std::size_t payload) : impl_(std::make_unique<Impl>(domain, payload)) {}
Requester::~Requester() = default;
void Requester::wait_for_replier() { impl_->wait_for_replier(); }
void Requester::run_blocking(long count) { impl_->run_blocking(count); }
void Requester::run_pipelined(long count, long window) { impl_->run_pipelined(count, window); }
void Requester::send_stop() { impl_->send_stop(); }

void answer_requests(int domain, Answer answer) {
  if (answer == Answer::in_listener) {
    ListenerEcho(domain).wait_for_stop();
    return;
  }
  Arrival arrival;
  const End end(domain, "hand_written_reply", "hand_written_request", Arrival::on_data, &arrival);
  do { arrival.wait(); } while (answer_available(end, end.reader));
}

}  // namespace bench::hand_written
