#include "support/floor.hpp"

#include <algorithm>
#include <cstring>

namespace bench {

Channel::Channel(std::size_t slots, std::size_t size)
    : slots_(slots), size_(size), stride_((size + sizeof(Block) - 1) / sizeof(Block)), memory_(slots * stride_) {}

// The slot is written outside the lock: nobody reads it before `sent_` says so. Waking after the unlock keeps the
// receiver from waking up only to wait for the mutex.
void Channel::push(const DDS_Octet* octets) {
  std::memcpy(slot(sent_), octets, size_);
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    ++sent_;
  }
  arrived_.notify_one();
}

const DDS_Octet* Channel::front() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (sent_ == received_) { arrived_.wait(lock); }
  return slot(received_);
}

ThreadFloor::ThreadFloor(std::size_t window, std::size_t size, Placement placement)
    : window_(static_cast<long>(window)),
      request_(size),
      requests_channel_(window, size),
      replies_channel_(window, size),
      replier_([this, placement] {
        place_this_thread(placement, Side::replier);
        answer();
      }) {}

ThreadFloor::~ThreadFloor() {
  request_.set_tag(stop_tag);
  requests_channel_.push(request_.octets());
  replier_.join();
}

void ThreadFloor::run(long count) {
  const long ahead = std::min(window_, count);
  for (long i = 0; i < ahead; ++i) { send(); }
  for (long i = ahead; i < count; ++i) {
    receive();
    send();
  }
  for (long i = 0; i < ahead; ++i) { receive(); }
}

void ThreadFloor::send() {
  request_.set_tag(++sent_tag_);
  requests_channel_.push(request_.octets());
}

void ThreadFloor::receive() {
  check_tag(tag_of(replies_channel_.front()), ++received_tag_);
  replies_channel_.pop();
}

void ThreadFloor::answer() {
  std::uint64_t answered = 0;
  for (;;) {
    const DDS_Octet* const request = requests_channel_.front();
    const std::uint64_t tag = tag_of(request);
    if (tag == stop_tag) { return; }
    check_tag(tag, ++answered);
    replies_channel_.push(request);
    requests_channel_.pop();
  }
}

CallFloor::CallFloor(std::size_t size) : request_(size), received_(size), reply_(size) {}

void CallFloor::run(long count) {
  for (long i = 0; i < count; ++i) {
    request_.set_tag(++tag_);
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      std::memcpy(received_.data(), request_.octets(), request_.size());
    }
    answer();
    check_tag(tag_of(reply_.octets()), tag_);
  }
}

// A call as it is between modules: not inlined.
[[gnu::noinline]] void CallFloor::answer() {
  check_tag(tag_of(received_.octets()), ++answered_tag_);
  const std::lock_guard<std::mutex> lock(mutex_);
  std::memcpy(reply_.data(), received_.octets(), received_.size());
}

}  // namespace bench
