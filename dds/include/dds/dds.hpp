#pragma once

// Everything of the DDS layer's API.

#include <dds/builtin_types.hpp>
#include <dds/condition.hpp>
#include <dds/domain_participant_factory.hpp>
#include <dds/fast_buffer_pool.hpp>
#include <dds/listener.hpp>
#include <dds/log.hpp>
#include <dds/memory.hpp>
#include <dds/procedural.hpp>
