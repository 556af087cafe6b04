#pragma once

#include <string>

#include <requestreply/exception.hpp>

class DDSDataReader;
class DDSDataWriter;

namespace zemtra {
namespace details {

/// Adds an entity's context to a caught exception. The context is `class_name`, then, if both the writer's and the
/// reader's topic have a name, "(writer topic, reader topic)", then "::" and `method_name`; for a content-filtered
/// topic the related topic's name counts. Logs the context as a failure, if the masks allow it. Then, with " failure"
/// appended, returns it or, if `rethrow_now`, throws `ex` again as its own class with that text in front of its
/// message. `writer` and `reader` may be null.
ZEMTRA_EXPORT std::string log_and_rethrow_conditional(DDSDataWriter* writer, DDSDataReader* reader,
                                                      const Rethrowable& ex, const char* class_name,
                                                      const char* method_name, bool rethrow_now);

}  // namespace details
}  // namespace zemtra
