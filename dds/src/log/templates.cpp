#include <dds/log.hpp>

const QVXLogMessage DDS_LOG_BAD_PARAMETER_s{"bad parameter: %s"};
const QVXLogMessage DDS_LOG_UNSUPPORTED_s{"unsupported: %s"};
const QVXLogMessage QVX_LOG_ANY_FAILURE_s{"failure: %s"};
const QVXLogMessage QVX_LOG_ANY_s{"%s"};
const QVXLogMessage QVX_LOG_CREATION_FAILURE_s{"failed to create: %s"};
const QVXLogMessage QVX_LOG_CREATE_s{"could not create %s"};
const QVXLogMessage QVX_LOG_GET_FAILURE_s{"failed to get: %s"};
const QVXLogMessage QVX_LOG_PRECONDITION_FAILURE_s{"precondition not met: %s"};
const QVXLogMessage QVX_LOG_REMOVE_FAILURE_s{"failed to remove: %s"};
const QVXLogMessage QVX_LOG_DESTRUCTION_FAILURE_s{"failed to destroy: %s"};
