#pragma once

#include <requestreply/correlation_cft_builder.hpp>
#include <requestreply/entity_params.hpp>
#include <requestreply/entity_untyped_impl.hpp>
#include <requestreply/exception.hpp>
#include <requestreply/fast_object_pool.hpp>
#include <requestreply/loaned_samples.hpp>
#include <requestreply/log_and_rethrow.hpp>
#include <requestreply/replier_untyped_impl.hpp>
#include <requestreply/requester_untyped_impl.hpp>
#include <requestreply/sample.hpp>
#include <requestreply/sample_identity.hpp>
#include <requestreply/sample_ref.hpp>
#include <requestreply/scoped_read_condition.hpp>
#include <requestreply/topic_naming.hpp>
#include <requestreply/type_traits.hpp>
