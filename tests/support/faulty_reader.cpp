#include "support/faulty_reader.hpp"

#include <algorithm>

namespace support {

namespace {

std::string masks(DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                  DDS_InstanceStateMask instance_states) {
  return std::to_string(sample_states) + ", " + std::to_string(view_states) + ", " + std::to_string(instance_states);
}

}  // namespace

DDSDataReader* FaultyReadCondition::get_datareader() {
  return Seam::get().enter(Call::get_condition_reader, "condition.get_datareader") ? nullptr : &reader_;
}

DDSTopicDescription* FaultyReader::get_topicdescription() {
  if (Seam::get().enter(Call::get_reader_topicdescription, "reader.get_topicdescription")) { return nullptr; }
  return real_.get_topicdescription();
}

DDSReadCondition* FaultyReader::create_readcondition(DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                                     DDS_InstanceStateMask instance_states) {
  const std::string who = "reader.create_readcondition(" + masks(sample_states, view_states, instance_states) + ")";
  if (Seam::get().enter(Call::create_readcondition, who)) { return nullptr; }
  return wrap(real_.create_readcondition(sample_states, view_states, instance_states));
}

DDS_ReturnCode_t FaultyReader::create_index(const char* index_name) {
  const std::string who = std::string("reader.create_index(") + index_name + ")";
  if (const auto fault = Seam::get().enter(Call::create_index, who)) { return *fault; }
  return real_.create_index(index_name);
}

DDSReadCondition* FaultyReader::create_index_condition(DDS_SampleStateMask sample_states, DDS_ViewStateMask view_states,
                                                       DDS_InstanceStateMask instance_states, const char* index_name,
                                                       const DDS_SampleInfo& key) {
  const std::string who =
      "reader.create_index_condition(" + masks(sample_states, view_states, instance_states) + ", " + index_name + ")";
  if (Seam::get().enter(Call::create_index_condition, who)) { return nullptr; }
  return wrap(real_.create_index_condition(sample_states, view_states, instance_states, index_name, key));
}

DDS_ReturnCode_t FaultyReader::delete_readcondition(DDSReadCondition* condition) {
  if (const auto fault = Seam::get().enter(Call::delete_readcondition, "reader.delete_readcondition")) {
    return *fault;
  }
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto found = std::find_if(conditions_.begin(), conditions_.end(),
                                  [condition](const auto& entry) { return entry.get() == condition; });
  if (found == conditions_.end()) { return real_.delete_readcondition(condition); }
  const DDS_ReturnCode_t retcode = real_.delete_readcondition((*found)->real());
  if (retcode == DDS_RETCODE_OK) { conditions_.erase(found); }
  return retcode;
}

DDSReadCondition* FaultyReader::wrap(DDSReadCondition* condition) {
  if (condition == nullptr) { return nullptr; }
  const std::lock_guard<std::mutex> lock(mutex_);
  conditions_.push_back(std::make_unique<FaultyReadCondition>(*condition, *this));
  return conditions_.back().get();
}

}  // namespace support
