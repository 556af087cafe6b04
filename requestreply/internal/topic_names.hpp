#pragma once

#include <string>

#include <requestreply/entity_params.hpp>

namespace zemtra {
namespace details {

/// The request topic's name that the parameters give: the explicit one or else the one derived from the service name.
std::string request_topic_name(const EntityParams& params);
/// The same for the reply topic.
std::string reply_topic_name(const EntityParams& params);

}  // namespace details
}  // namespace zemtra
