#pragma once

// All of the typed front ends.

#include <zemtra/duration.hpp>
#include <zemtra/handler_replier.hpp>
#include <zemtra/participant.hpp>
#include <zemtra/pending_request.hpp>
#include <zemtra/qos.hpp>
#include <zemtra/replier.hpp>
#include <zemtra/replier_params.hpp>
#include <zemtra/requester.hpp>
