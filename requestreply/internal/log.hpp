#pragma once

#include <dds/log.hpp>

namespace zemtra {
namespace details {

/// Writes one log line of the library, with the caller's source position, if the masks allow it. Allocates nothing and
/// never throws.
inline void log(unsigned int level, const char* context, const QVXLogMessage& log_template, const char* msg,
                const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
  constexpr int instance = -1;
  constexpr int subsystem = 0xF0000;
  if ((DDSLog_g_instrumentationMask & level) == 0) { return; }
  if ((DDSLog_g_submoduleMask & DDS_LOG_SUBMODULE_REQUEST_REPLY) == 0) { return; }
  QVXLogMessage_printWithParams(instance, static_cast<int>(level), subsystem, file, line, context, &log_template, msg);
}

}  // namespace details
}  // namespace zemtra
