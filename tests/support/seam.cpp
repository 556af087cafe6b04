#include "support/seam.hpp"

#include <algorithm>
#include <new>

namespace support {

const char* name_of(Call call) {
  switch (call) {
    case Call::create_topic:
      return "create_topic";
    case Call::create_contentfilteredtopic:
      return "create_contentfilteredtopic";
    case Call::delete_contentfilteredtopic:
      return "delete_contentfilteredtopic";
    case Call::create_datawriter:
      return "create_datawriter";
    case Call::delete_datawriter:
      return "delete_datawriter";
    case Call::create_datareader:
      return "create_datareader";
    case Call::delete_datareader:
      return "delete_datareader";
    case Call::get_default_datawriter_qos:
      return "get_default_datawriter_qos";
    case Call::get_default_datareader_qos:
      return "get_default_datareader_qos";
    case Call::get_current_time:
      return "get_current_time";
    case Call::get_profile_datawriter_qos:
      return "get_profile_datawriter_qos";
    case Call::get_profile_datareader_qos:
      return "get_profile_datareader_qos";
    case Call::copy_datawriter_qos:
      return "copy_datawriter_qos";
    case Call::copy_datareader_qos:
      return "copy_datareader_qos";
    case Call::duplicate_string:
      return "duplicate_string";
    case Call::add_property:
      return "add_property";
    case Call::get_writer_qos:
      return "get_writer_qos";
    case Call::get_writer_topic:
      return "get_writer_topic";
    case Call::get_reader_topicdescription:
      return "get_reader_topicdescription";
    case Call::create_readcondition:
      return "create_readcondition";
    case Call::delete_readcondition:
      return "delete_readcondition";
    case Call::create_index:
      return "create_index";
    case Call::create_index_condition:
      return "create_index_condition";
    case Call::get_condition_reader:
      return "get_condition_reader";
    case Call::attach_condition:
      return "attach_condition";
    case Call::detach_condition:
      return "detach_condition";
    case Call::wait:
      return "wait";
    case Call::write:
      return "write";
    case Call::read_or_take:
      return "read_or_take";
    case Call::return_loan:
      return "return_loan";
    case Call::create_pool:
      return "create_pool";
    case Call::get_pool_buffer:
      return "get_pool_buffer";
  }
  return "unknown";
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
