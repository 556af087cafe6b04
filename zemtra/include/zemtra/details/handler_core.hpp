#pragma once

#include <atomic>
#include <exception>

#include <dds/listener.hpp>
#include <zemtra/details/replier_core.hpp>

namespace zemtra {
namespace details {

/// What of a replier with a handler knows no type: hands each request to `handle`, in the order of arrival and one
/// after the other, as a listener of its reader. No exception leaves it.
class ZEMTRA_TYPED_EXPORT HandlerCore : private DDSDataReaderListener {
 public:
  HandlerCore(const EntityParams& params, RegisterTypeFunction register_request_type,
              RegisterTypeFunction register_reply_type, int samples_size);
  /// `stop` has been called.
  ~HandlerCore() override;
  HandlerCore(const HandlerCore&) = delete;
  HandlerCore& operator=(const HandlerCore&) = delete;

  ReplierCore& replier() { return replier_; }
  const ReplierCore& replier() const { return replier_; }

 protected:
  /// For the derived class, once it is complete: begins with what has arrived already.
  void start();
  /// For the derived class, before anything of it goes: returns when no call of `handle` runs, nor will any begin.
  void stop() noexcept;

 private:
  virtual void handle(void* request, const DDS_SampleInfo& info) = 0;
  virtual void on_error(const std::exception_ptr& error, const DDS_SampleIdentity_t& request) = 0;

  void on_data_available(DDSDataReader* reader) override;
  void serve_in_turn();
  void serve();
  UntypedLoan lend(int most) noexcept;
  /// Whether there may be more.
  bool serve_some();
  void serve_one(void* request, const DDS_SampleInfo& info) noexcept;

  ReplierCore replier_;
  std::atomic<bool> stopping_{false};
  std::atomic<bool> started_{false};  // only the listener serves any more, whose calls never overlap
  std::atomic<int> news_{0};          // before that, arrivals not yet looked at: whoever raises it from zero looks
};

}  // namespace details
}  // namespace zemtra
