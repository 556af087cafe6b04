#pragma once

#include <dds/log.hpp>

namespace dds {

/// Logs a failure of this layer, if the masks let it through: the template's text with the formatted text in place of
/// its "%s", cut to 1023 octets. Allocates nothing.
void log_failure(const char* file, int line, const char* context, const QVXLogMessage& log_template, const char* format,
                 ...) __attribute__((format(printf, 5, 6)));

}  // namespace dds

/// `dds::log_failure` at this place in the source.
#define DDS_LOG_FAILURE(context, log_template, ...) \
  ::dds::log_failure(__FILE__, __LINE__, context, log_template, __VA_ARGS__)
