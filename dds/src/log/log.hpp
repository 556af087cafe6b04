#pragma once

#include <dds/basic_types.hpp>
#include <dds/log.hpp>

namespace dds {

/// Logs a failure of this layer, if the masks let it through: the template's text with the formatted text in place of
/// its "%s", cut to 1023 octets. Allocates nothing.
DDS_EXPORT void log_failure(const char* file, int line, const char* context, const QVXLogMessage& log_template,
                            const char* format, ...) __attribute__((format(printf, 5, 6)));

/// Passes an outcome on. A refusal of the call itself is logged first: a bad parameter, or, as `precondition` puts it,
/// an object that is not in the state for it. No lock may be held.
DDS_EXPORT DDS_ReturnCode_t log_refusal(const char* file, int line, const char* context, DDS_ReturnCode_t outcome,
                                        const char* precondition);

}  // namespace dds

/// `dds::log_failure` at this place in the source.
#define DDS_LOG_FAILURE(context, log_template, ...) \
  ::dds::log_failure(__FILE__, __LINE__, context, log_template, __VA_ARGS__)

/// `dds::log_refusal` at this place in the source.
#define DDS_LOG_REFUSAL(context, outcome, precondition) \
  ::dds::log_refusal(__FILE__, __LINE__, context, outcome, precondition)
