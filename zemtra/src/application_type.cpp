#include <zemtra/details/application_type.hpp>

#include <requestreply/exception.hpp>

namespace zemtra {
namespace details {

const char* register_application_type(DDSDomainParticipant* participant, const char* name,
                                      const DDS_TypePlugin& plugin) {
  constexpr const char* method_name = "dds_type_traits::register_type";
  if (participant != nullptr) {
    check_retcode(participant->register_type(name, plugin), method_name, QVX_LOG_CREATION_FAILURE_s, name, true);
  } else {
    check_retcode(DDS_RETCODE_BAD_PARAMETER, method_name, DDS_LOG_BAD_PARAMETER_s, "participant", true);
  }
  return name;
}

}  // namespace details
}  // namespace zemtra
