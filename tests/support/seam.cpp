#include "support/seam.hpp"

#include <algorithm>
#include <new>

namespace support {

const char* name_of(Call call) {
  static constexpr const char* names[] = {"create_topic",
                                          "create_contentfilteredtopic",
                                          "delete_contentfilteredtopic",
                                          "create_datawriter",
                                          "delete_datawriter",
                                          "create_datareader",
                                          "delete_datareader",
                                          "get_default_datawriter_qos",
                                          "get_default_datareader_qos",
                                          "get_current_time",
                                          "get_profile_datawriter_qos",
                                          "get_profile_datareader_qos",
                                          "copy_datawriter_qos",
                                          "copy_datareader_qos",
                                          "duplicate_string",
                                          "add_property",
                                          "get_writer_qos",
                                          "get_writer_topic",
                                          "get_reader_topicdescription",
                                          "create_readcondition",
                                          "delete_readcondition",
                                          "create_index",
                                          "create_index_condition",
                                          "get_condition_reader",
                                          "attach_condition",
                                          "detach_condition",
                                          "wait",
                                          "write",
                                          "read_or_take",
                                          "return_loan",
                                          "create_pool",
                                          "get_pool_buffer",
                                          "return_pool_buffer",
                                          "delete_pool"};
  static_assert(sizeof(names) / sizeof(names[0]) == static_cast<std::size_t>(Call::delete_pool) + 1);
  return names[static_cast<std::size_t>(call)];
}

Seam& Seam::get() {
  static Seam seam;
  return seam;
}

void Seam::reset() {
  const std::lock_guard<std::mutex> lock(mutex_);
  planned_.clear();
  calls_.clear();
  times.clear();
  wait_timeouts.clear();
  on_wait = nullptr;
  reads.clear();
  writes.clear();
  pools.clear();
}

void Seam::plan(const Fault& fault) {
  const std::lock_guard<std::mutex> lock(mutex_);
  planned_.push_back({fault, fault.occurrence});
}

std::optional<DDS_ReturnCode_t> Seam::enter(Call call, const std::string& who) {
  const std::lock_guard<std::mutex> lock(mutex_);
  calls_.emplace_back(call, who);
  for (Planned& planned : planned_) {
    if (planned.fault.call == call && --planned.remaining == 0) {
      if (planned.fault.throws) { throw std::bad_alloc(); }
      return planned.fault.retcode;
    }
  }
  return std::nullopt;
}

bool Seam::all_happened() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return std::all_of(planned_.begin(), planned_.end(), [](const Planned& planned) { return planned.remaining <= 0; });
}

std::vector<std::string> Seam::trace() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  std::vector<std::string> names;
  for (const auto& entry : calls_) { names.push_back(entry.second); }
  return names;
}

int Seam::count(Call call) const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return static_cast<int>(
      std::count_if(calls_.begin(), calls_.end(), [call](const auto& entry) { return entry.first == call; }));
}

void Seam::note(const ReadArguments& arguments) {
  const std::lock_guard<std::mutex> lock(mutex_);
  reads.push_back(arguments);
}

void Seam::note(const DDS_WriteParams_t& params) {
  const std::lock_guard<std::mutex> lock(mutex_);
  writes.push_back(params);
}

void Seam::note(const DDS_Duration_t& wait_timeout) {
  const std::lock_guard<std::mutex> lock(mutex_);
  wait_timeouts.push_back(wait_timeout);
}

}  // namespace support
