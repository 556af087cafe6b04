#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include <zemtra/details/handler_core.hpp>
#include <zemtra/replier_params.hpp>
#include <zemtra/type_traits.hpp>

namespace zemtra {

/// Where the replies to one request go: any number, at once or later, from any thread. A small value; must not be used
/// once its replier has gone. Sending throws as `Replier::send_reply` does.
template <class TRep>
class ReplySink {
 public:
  /// Made by `HandlerReplier`.
  ReplySink(details::ReplierCore& replier, const DDS_SampleIdentity_t& request) noexcept
      : replier_(&replier), request_(request) {}

  void send(const TRep& reply) const {
    DDS_WriteParams_t params;
    const typename dds_type_traits<TRep>::Outgoing outgoing(reply);
    replier_->send_sample(outgoing.get(), request_, params);
  }
  /// Of the request.
  const DDS_SampleIdentity_t& identity() const noexcept { return request_; }

 private:
  details::ReplierCore* replier_;
  DDS_SampleIdentity_t request_;
};

/// Answers the requests of a service by a handler that is called for each:
///
///     zemtra::HandlerReplier<Question, Answer> replier(participant, "Oracle", [](const Question& q) { return ... });
///
/// The handler takes the request (for `std::string` and the other built-in types also what the elements of a loan give
/// as `data()`) and either returns the reply (of the built-in structures and string pointers a `Sample` that owns it),
/// or takes a `ReplySink<TRep>` as well and returns nothing.
///
/// It is called by the thread that delivers the request (in one process the one that sends it, which may then have to
/// handle those of other threads, too), for one request after the other, in the order of arrival (of types with a key:
/// of each instance), under no lock. It may use requesters and repliers, this one's sinks included, but to call its own
/// service is to wait for itself. What it does not answer is not answered. An exception that leaves it is logged and
/// goes to the error handler, which may still answer; what leaves that is logged. Requests that arrived before the
/// handler was set are handled on the constructing thread.
///
/// Move-only. Destroying it waits for a running handler, and so must not be done by one; requests that wait for it are
/// dropped.
template <class TReq, class TRep>
class HandlerReplier {
  using RequestTraits = dds_type_traits<TReq>;
  using ReplyTraits = dds_type_traits<TRep>;

 public:
  using Sink = ReplySink<TRep>;
  using ErrorHandler = std::function<void(const std::exception_ptr& error, const Sink& sink)>;

  /// On the topics of a service, with the default QoS for request-reply. The participant must outlive the replier.
  template <class Handler>
  HandlerReplier(DDSDomainParticipant* participant, const std::string& service_name, Handler handler,
                 ErrorHandler on_error = {})
      : HandlerReplier(ReplierParams(participant).service_name(service_name), std::move(handler), std::move(on_error)) {
  }
  template <class Handler>
  HandlerReplier(const ReplierParams& params, Handler handler, ErrorHandler on_error = {})
      : core_(make_core(params, std::move(handler), std::move(on_error))) {}

  // As of `Replier`.

  bool wait_for_requesters(const Duration& timeout) const { return core_->replier().match().wait(timeout); }
  int matched_requesters() const { return core_->replier().match().complete_ends(); }
  std::string explain() const { return core_->replier().match().explain(); }

  // What is underneath. Belongs to the replier; the reader's listener is not to be replaced.

  DDSDataReader* request_datareader() const noexcept { return core_->replier().get_datareader(); }
  DDSDataWriter* reply_datawriter() const noexcept { return core_->replier().get_datawriter(); }
  details::ReplierUntypedImpl& untyped() const noexcept { return core_->replier(); }

 private:
  using Argument = typename RequestTraits::ConstReference;
  using Returned = typename ReplyTraits::Value;
  template <class Handler>
  static constexpr bool kReturnsReply = std::is_invocable_r_v<Returned, Handler&, Argument>;

  template <class Handler>
  static std::unique_ptr<details::HandlerCore> make_core(const ReplierParams& params, Handler handler,
                                                         ErrorHandler on_error) {
    constexpr bool fits = kReturnsReply<Handler> || std::is_invocable_v<Handler&, Argument, Sink>;
    static_assert(fits,
                  "the handler takes a request and returns a reply (of DDS_Octets, say, a zemtra::Sample<DDS_Octets>), "
                  "or takes a request and a reply sink");
    if constexpr (fits) {
      return std::make_unique<Core<Handler>>(params, std::move(handler), std::move(on_error));
    } else {
      return nullptr;
    }
  }

  template <class Handler>
  class Core final : public details::HandlerCore {
   public:
    Core(const ReplierParams& params, Handler handler, ErrorHandler on_error)
        : HandlerCore(params, &RequestTraits::register_type, &ReplyTraits::register_type, RequestTraits::sample_size),
          handler_(std::move(handler)),
          on_error_(std::move(on_error)) {
      start();
    }
    ~Core() override { stop(); }

   private:
    void handle(void* request, const DDS_SampleInfo& info) override {
      const Sink sink(replier(), info.sample_identity);
      Argument argument = RequestTraits::present(*static_cast<typename RequestTraits::Element*>(request), info);
      if constexpr (kReturnsReply<Handler>) {
        const Returned reply = handler_(argument);
        if constexpr (std::is_same_v<Returned, TRep>) {
          sink.send(reply);
        } else {
          sink.send(reply.data());
        }
      } else {
        handler_(argument, sink);
      }
    }
    void on_error(const std::exception_ptr& error, const DDS_SampleIdentity_t& request) override {
      if (on_error_) { on_error_(error, Sink(replier(), request)); }
    }

    Handler handler_;
    ErrorHandler on_error_;
  };

  std::unique_ptr<details::HandlerCore> core_;
};

}  // namespace zemtra
