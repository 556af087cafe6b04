#include "condition/condition_core.hpp"

DDSGuardCondition::DDSGuardCondition() : core_(new dds::ConditionCore) {}

DDSGuardCondition::~DDSGuardCondition() {
  core_->detach_all();
  core_->unref();
}

DDS_Boolean DDSGuardCondition::get_trigger_value() { return core_->triggered(); }

DDS_ReturnCode_t DDSGuardCondition::set_trigger_value(DDS_Boolean value) {
  dds::Notifications notifications;
  core_->set_shared(value, notifications);
  return DDS_RETCODE_OK;
}

dds::ConditionCore& DDSGuardCondition::core() { return *core_; }
