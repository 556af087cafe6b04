#pragma once

#include <dds/entity.hpp>

namespace support {

/// An entity that passes everything on to a real one.
template <class Entity>
class Wrapping : public Entity {
 public:
  explicit Wrapping(Entity& real) : real_(real) {}

  Entity* real() { return &real_; }

  DDSStatusCondition* get_statuscondition() override { return real_.get_statuscondition(); }
  DDS_StatusMask get_status_changes() override { return real_.get_status_changes(); }
  DDS_InstanceHandle_t get_instance_handle() override { return real_.get_instance_handle(); }

 protected:
  Entity& real_;
};

// Operations that are passed on as they come; those with parameters return a code.
#define PASS_ON_0(Result, operation) \
  Result operation() override { return real_.operation(); }
#define PASS_ON_1(operation, A) \
  DDS_ReturnCode_t operation(A a) override { return real_.operation(a); }
#define PASS_ON_2(operation, A, B) \
  DDS_ReturnCode_t operation(A a, B b) override { return real_.operation(a, b); }

}  // namespace support
