#pragma once

#include <dds/fast_buffer_pool.hpp>
#include <dds/procedural.hpp>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace support {

// The last two cannot fail; they are only noted.
#define SUPPORT_CALLS                                                                                                 \
  create_topic, create_contentfilteredtopic, delete_contentfilteredtopic, create_datawriter, delete_datawriter,       \
      create_datareader, delete_datareader, get_default_datawriter_qos, get_default_datareader_qos, get_current_time, \
      get_profile_datawriter_qos, get_profile_datareader_qos, copy_datawriter_qos, copy_datareader_qos,               \
      duplicate_string, add_property, get_writer_qos, get_writer_topic, get_reader_topicdescription,                  \
      create_readcondition, delete_readcondition, create_index, create_index_condition, get_condition_reader,         \
      attach_condition, detach_condition, wait, write, read_or_take, return_loan, create_pool, get_pool_buffer,       \
      return_pool_buffer, delete_pool

/// A call of the request-reply library into the DDS layer that can be made to fail.
enum class Call { SUPPORT_CALLS };
std::string name_of(Call call);

/// How a call fails instead of being carried out. A call that returns an object returns null whatever the code.
struct Fault {
  Call call;
  int occurrence = 1;  ///< which call of its kind from the moment of planning, counted from 1
  DDS_ReturnCode_t retcode = DDS_RETCODE_ERROR;
  bool throws = false;  ///< throws `std::bad_alloc` instead
};

struct ReadArguments {
  int data_seq_len, data_seq_max_len;
  unsigned char data_seq_has_ownership;
  void* copy_buffer;
  int sample_size, max_samples;
  bool take;
};

/// What lies between the library and the DDS layer: which calls came, with which arguments, and which of them fail.
/// The wrapping entities report to it, and so do the functions that stand in for those of the DDS layer. Thread-safe,
/// except for the public fields, which a test uses while no other thread calls in.
class Seam {
 public:
  static Seam& get();

  /// Forgets everything; no call fails any more.
  void reset();
  void plan(const Fault& fault);
  /// Notes a call, `who` being its full name, and says how it fails, if it does. Throws if that is the plan.
  std::optional<DDS_ReturnCode_t> enter(Call call, const std::string& who);
  /// Whether every planned fault has happened.
  bool all_happened() const;
  /// The names of the calls so far, in order.
  std::vector<std::string> trace() const;
  int count(Call call) const;

  std::deque<DDS_Time_t> times;               ///< what the next calls of get_current_time return instead of the time
  std::vector<DDS_Duration_t> wait_timeouts;  ///< of each wait
  /// Called before each wait, and in place of it when it returns a code.
  std::function<std::optional<DDS_ReturnCode_t>(DDSWaitSet&)> on_wait;
  std::vector<ReadArguments> reads;
  std::vector<DDS_WriteParams_t> writes;  ///< as they came in
  std::vector<MORAFastBufferPool*> pools;
  template <class T>
  void note(std::vector<T> Seam::*all, const typename std::vector<T>::value_type& value) {
    const std::lock_guard<std::mutex> lock(mutex_);
    (this->*all).push_back(value);
  }

 private:
  struct Planned {
    Fault fault;
    int remaining;
  };

  mutable std::mutex mutex_;
  std::vector<Planned> planned_;
  std::vector<std::pair<Call, std::string>> calls_;
};

}  // namespace support
