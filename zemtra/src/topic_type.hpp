#pragma once

#include <cstring>
#include <string>

#include <dds/topic.hpp>
#include <requestreply/exception.hpp>

namespace zemtra {
namespace details {

/// A topic that exists is used whatever its type. Samples of one type would then be handled as another's: throws
/// `PreconditionNotMetException`.
inline void require_type(DDSTopicDescription& topic, const char* type_name, const char* method_name) {
  if (std::strcmp(topic.get_type_name(), type_name) == 0) { return; }
  const std::string fault = std::string("topic \"") + topic.get_name() + "\" is of type " + topic.get_type_name() +
                            ", not of type " + type_name;
  check_retcode(DDS_RETCODE_PRECONDITION_NOT_MET, method_name, QVX_LOG_PRECONDITION_FAILURE_s, fault, false);
}

}  // namespace details
}  // namespace zemtra
