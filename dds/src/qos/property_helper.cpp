#include <dds/qos.hpp>

#include <cstring>
#include <utility>

const DDS_Property_t* DDSPropertyQosPolicyHelper::lookup_property(const DDS_PropertyQosPolicy& policy,
                                                                  const char* name) {
  if (name == nullptr) { return nullptr; }
  for (int i = 0; i < policy.value.length(); ++i) {
    const DDS_Property_t& property = policy.value[i];
    if (property.name != nullptr && std::strcmp(property.name, name) == 0) { return &property; }
  }
  return nullptr;
}

DDS_Property_t* DDSPropertyQosPolicyHelper::lookup_property(DDS_PropertyQosPolicy& policy, const char* name) {
  return const_cast<DDS_Property_t*>(lookup_property(std::as_const(policy), name));
}

DDS_ReturnCode_t DDSPropertyQosPolicyHelper::add_property(DDS_PropertyQosPolicy& policy, const char* name,
                                                          const char* value, DDS_Boolean propagate) {
  if (name == nullptr || value == nullptr) { return DDS_RETCODE_BAD_PARAMETER; }
  if (lookup_property(policy, name) != nullptr) { return DDS_RETCODE_PRECONDITION_NOT_MET; }
  DDS_Property_t property;
  property.name = DDS_String_dup(name);
  property.value = DDS_String_dup(value);
  property.propagate = propagate;
  const int length = policy.value.length();
  if (property.name == nullptr || property.value == nullptr || !policy.value.ensure_length(length + 1, length + 1)) {
    return DDS_RETCODE_OUT_OF_RESOURCES;
  }
  policy.value[length] = std::move(property);
  return DDS_RETCODE_OK;
}
