#include "condition/condition_core.hpp"

namespace {

dds::ConditionCore* make_core() {
  auto owner = dds::RefPtr<dds::OwnerLock>::adopt(new dds::OwnerLock);
  return new dds::ConditionCore(*owner);
}

}  // namespace

DDSGuardCondition::DDSGuardCondition() : core_(make_core()) {}

DDSGuardCondition::~DDSGuardCondition() {
  {
    const dds::MutexLock lock(core_->mutex());
    core_->detach_all();
  }
  core_->unref();
}

DDS_Boolean DDSGuardCondition::get_trigger_value() { return core_->triggered(); }

DDS_ReturnCode_t DDSGuardCondition::set_trigger_value(DDS_Boolean value) {
  dds::Notifications notifications;
  const dds::MutexLock lock(core_->mutex());
  core_->set(value, notifications);
  return DDS_RETCODE_OK;
}

dds::ConditionCore& DDSGuardCondition::core() { return *core_; }
