#pragma once

#include <dds/log.hpp>

namespace zemtra {
namespace details {

/// Writes one log line of the level for failures, with the caller's source position, if the masks allow it. Never
/// throws.
inline void log_failure(const char* context, const QVXLogMessage& log_template, const char* text,
                        const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
  constexpr int instance = -1;
  constexpr int subsystem = 0xF0000;
  if ((DDSLog_g_instrumentationMask & DDS_LOG_LEVEL_FAILURE) == 0) { return; }
  if ((DDSLog_g_submoduleMask & DDS_LOG_SUBMODULE_REQUEST_REPLY) == 0) { return; }
  QVXLogMessage_printWithParams(instance, static_cast<int>(DDS_LOG_LEVEL_FAILURE), subsystem, file, line, context,
                                &log_template, text);
}

}  // namespace details
}  // namespace zemtra
