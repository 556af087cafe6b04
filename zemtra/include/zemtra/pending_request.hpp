#pragma once

#include <optional>
#include <utility>

#include <requestreply/loaned_samples.hpp>
#include <zemtra/details/requester_core.hpp>
#include <zemtra/type_traits.hpp>

namespace zemtra {

/// A request that has been sent and whose replies are being consumed, in the order of their arrival (of a type with
/// key, those of one instance after those of another):
///
///     for (const auto& reply : requester.send(query, 500ms)) { use(reply.data()); }
///
/// Destroying it, or assigning to it, abandons the request: its replies, those that are here and those that come later,
/// are thrown away and counted (`Requester::discarded_replies`). Move-only. Used by one thread at a time; must not
/// outlive its requester. Nothing else should receive replies to the same request.
template <class TRep>
class PendingRequest {
 public:
  /// A reply in the reader's memory; valid until the next one is asked for or the pending request is gone.
  using Reply = LoanedSample<TRep>;

  /// Made by `Requester::send`.
  PendingRequest(details::RequesterCore& requester, typename dds_type_traits<TRep>::DataReader* reader,
                 const DDS_SampleIdentity_t& identity, const Deadline& deadline) noexcept
      : requester_(&requester), reader_(reader), identity_(identity), deadline_(deadline) {}
  ~PendingRequest() { abandon(); }
  PendingRequest(PendingRequest&& other) noexcept
      : requester_(std::exchange(other.requester_, nullptr)),
        reader_(other.reader_),
        identity_(other.identity_),
        deadline_(other.deadline_),
        arrived_(std::move(other.arrived_)),
        position_(other.position_),
        closed_(other.closed_) {}
  PendingRequest& operator=(PendingRequest&& other) noexcept {
    if (this != &other) {
      abandon();
      requester_ = std::exchange(other.requester_, nullptr);
      reader_ = other.reader_;
      identity_ = other.identity_;
      deadline_ = other.deadline_;
      arrived_ = std::move(other.arrived_);
      position_ = other.position_;
      closed_ = other.closed_;
    }
    return *this;
  }

  /// Of the request, under which its replies are known.
  const DDS_SampleIdentity_t& identity() const noexcept { return identity_; }

  /// The next reply, waiting for it until the deadline; empty after that, and once the request is abandoned. Replies
  /// that have arrived before the deadline are handed out after it, too. Throws what the untyped core throws.
  std::optional<Reply> next() {
    while (requester_ != nullptr) {
      while (position_ < arrived_.length()) {
        const Reply reply = arrived_[position_++];
        if (reply.has_data()) { return reply; }
      }
      if (!fetch()) { break; }
    }
    return std::nullopt;
  }

  /// Abandons the request now. Replies that were handed out become invalid.
  void abandon() noexcept {
    const int unseen = arrived_.length() - position_;
    give_back();
    if (requester_ != nullptr) { std::exchange(requester_, nullptr)->abandon(identity_, unseen); }
  }

  /// All replies until the deadline, in a range-based for.
  auto begin() { return Iterator<Never>(*this, Never(), false); }
  auto end() const noexcept { return End(); }

  /// At most `count` replies until the deadline; none for zero or less. As of `until`, the result is a range for one
  /// pass that refers to the pending request.
  auto replies(int count) & { return Replies<Countdown>{*this, Countdown{count}, count <= 0}; }
  auto replies(int count) && = delete;  // the pending request would be gone before its replies are used
  /// The replies until the deadline or the one of which `is_last` is true; that one is the last. `is_last` is asked
  /// once for each reply, after it has been used.
  template <class IsLast>
  auto until(IsLast is_last) & {
    return Replies<IsLast>{*this, std::move(is_last), false};
  }
  template <class IsLast>
  auto until(IsLast is_last) && = delete;  // as above

 private:
  struct Never {
    bool operator()(const Reply& /*reply*/) const { return false; }
  };
  struct Countdown {
    int left;
    bool operator()(const Reply& /*reply*/) { return --left <= 0; }
  };
  struct End {};

  template <class IsLast>
  class Iterator {
   public:
    Iterator(PendingRequest& pending, IsLast is_last, bool at_end)
        : pending_(pending), is_last_(std::move(is_last)), reply_(at_end ? std::nullopt : pending.next()) {}
    const Reply& operator*() const { return *reply_; }
    const Reply* operator->() const { return &*reply_; }
    Iterator& operator++() {
      const bool was_last = is_last_(std::as_const(*reply_));
      reply_ = was_last ? std::nullopt : pending_.next();
      return *this;
    }
    bool operator!=(const End& /*end*/) const { return reply_.has_value(); }

   private:
    PendingRequest& pending_;
    IsLast is_last_;
    std::optional<Reply> reply_;  // none at the end
  };

  template <class IsLast>
  struct Replies {
    PendingRequest& pending;
    IsLast is_last;
    bool is_empty;
    auto begin() { return Iterator<IsLast>(pending, is_last, is_empty); }
    auto end() const { return End(); }
  };

  /// Waits for further replies; false when there are none, nor will be.
  bool fetch() {
    give_back();
    if (closed_) { return false; }
    // What has arrived in time is still taken when the deadline passes, once, so that a stream of replies ends.
    closed_ = deadline_.passed();
    details::UntypedLoan loan = lend();
    if (loan.data == nullptr && !closed_) {
      closed_ = !requester_->await_reply(identity_, deadline_.remaining());
      loan = lend();
    }
    if (loan.data == nullptr) { return !closed_; }
    arrived_ = details::create_loaned_samples<TRep>(loan.data, loan.count, loan.infos, reader_);
    return true;
  }
  details::UntypedLoan lend() { return requester_->lend(identity_, closed_ ? DDS_LENGTH_UNLIMITED : kBatch, true); }
  void give_back() noexcept {
    arrived_ = LoanedSamples<TRep>();
    position_ = 0;
  }

  static constexpr int kBatch = 64;  // replies taken at a time, so that they are not all copied into one loan

  details::RequesterCore* requester_;                   // not owned; null once abandoned or moved from
  typename dds_type_traits<TRep>::DataReader* reader_;  // the requester's
  DDS_SampleIdentity_t identity_;
  Deadline deadline_;
  LoanedSamples<TRep> arrived_;  // taken and not all handed out
  int position_ = 0;             // of the next in arrived_
  bool closed_ = false;          // the deadline has passed, and what was there has been taken
};

}  // namespace zemtra
