#include <utility>

#include "condition/condition_core.hpp"
#include "log/log.hpp"

DDSWaitSet::DDSWaitSet() : core_(new dds::WaitSetCore) {}

DDSWaitSet::~DDSWaitSet() {
  core_->detach_all();
  core_->unref();
}

DDS_ReturnCode_t DDSWaitSet::attach_condition(DDSCondition* condition) {
  return DDS_LOG_REFUSAL("DDSWaitSet::attach_condition",
                         condition == nullptr ? DDS_RETCODE_BAD_PARAMETER : core_->attach(condition), "");
}

DDS_ReturnCode_t DDSWaitSet::detach_condition(DDSCondition* condition) {
  return DDS_LOG_REFUSAL("DDSWaitSet::detach_condition",
                         condition == nullptr ? DDS_RETCODE_BAD_PARAMETER : core_->detach(condition),
                         "the condition is not attached");
}

DDS_ReturnCode_t DDSWaitSet::get_conditions(DDSConditionSeq& conditions) { return core_->get_conditions(conditions); }

DDS_ReturnCode_t DDSWaitSet::wait(DDSConditionSeq& active_conditions, const DDS_Duration_t& timeout) {
  return DDS_LOG_REFUSAL("DDSWaitSet::wait", core_->wait(active_conditions, timeout), "another thread is waiting");
}

void DDSWaitSet::swap(DDSWaitSet& other) noexcept { std::swap(core_, other.core_); }
