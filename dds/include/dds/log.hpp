#pragma once

#include <dds/export.hpp>

/// A log template: a text with one "%s", where the argument of a log line goes. Templates are told apart by address.
struct QVXLogMessage {
  const char* format;
};

DDS_EXPORT extern const QVXLogMessage DDS_LOG_BAD_PARAMETER_s;
DDS_EXPORT extern const QVXLogMessage DDS_LOG_UNSUPPORTED_s;
DDS_EXPORT extern const QVXLogMessage QVX_LOG_ANY_FAILURE_s;
DDS_EXPORT extern const QVXLogMessage QVX_LOG_ANY_s;
DDS_EXPORT extern const QVXLogMessage QVX_LOG_CREATION_FAILURE_s;
DDS_EXPORT extern const QVXLogMessage QVX_LOG_CREATE_s;
DDS_EXPORT extern const QVXLogMessage QVX_LOG_GET_FAILURE_s;
DDS_EXPORT extern const QVXLogMessage QVX_LOG_PRECONDITION_FAILURE_s;
DDS_EXPORT extern const QVXLogMessage QVX_LOG_REMOVE_FAILURE_s;
DDS_EXPORT extern const QVXLogMessage QVX_LOG_DESTRUCTION_FAILURE_s;

/// The levels of log lines; each is the bit that enables it in `DDSLog_g_instrumentationMask`.
constexpr unsigned int DDS_LOG_LEVEL_FAILURE = 0x2;
constexpr unsigned int DDS_LOG_LEVEL_INFORMATION = 0x8;
/// The submodules that log; each is the bit that enables it in `DDSLog_g_submoduleMask`.
constexpr unsigned int DDS_LOG_SUBMODULE_DDS = 0x1;
constexpr unsigned int DDS_LOG_SUBMODULE_REQUEST_REPLY = 0x10;

/// Which levels and which submodules are logged. Callers test both before they log; by default failures of all
/// submodules are on and the informational level is off. Set them before other threads log.
DDS_EXPORT extern unsigned int DDSLog_g_instrumentationMask;
DDS_EXPORT extern unsigned int DDSLog_g_submoduleMask;

/// Writes one log line, whatever the masks say: the template's text with `argument` in place of its first "%s", cut to
/// 1023 octets. Thread-safe; allocates nothing. `instance` and `subsystem` are not shown.
DDS_EXPORT void QVXLogMessage_printWithParams(int instance, int level, int subsystem, const char* file, int line,
                                              const char* context, const QVXLogMessage* log_template,
                                              const char* argument);

/// Receives log lines; `text` is the filled template. May be called by several threads at once; must not throw.
typedef void (*DDSLogSink)(void* param, int level, const char* file, int line, const char* context,
                           const QVXLogMessage* log_template, const char* text);

/// Replaces where log lines go; null restores the default, a line on stderr. Thread-safe, but a line that another
/// thread is writing at that moment may still reach the former sink.
DDS_EXPORT void DDSLog_set_sink(DDSLogSink sink, void* param);
