#pragma once

#include <cstddef>

#include <dds/export.hpp>

/// A pool of equal buffers, each with an object that is built once and destroyed with the pool. Safe for concurrent
/// taking and giving back.
struct MORAFastBufferPool;

/// How a pool grows. -1 stands for "unlimited" as maximum and for "as many as there are" as increment.
struct MORAFastBufferPoolProperty {
  int initial;              ///< buffers made with the pool
  int maximal;              ///< buffers that the pool may ever hold
  int increment;            ///< buffers made when none is idle
  int multi_thread_access;  ///< must be 1: this pool always locks
  int reserved[3];          ///< must be 0
};

/// Builds the object in a fresh buffer; 1 on success, 0 on failure. Must not throw nor use the pool.
typedef int (*MORAFastBufferPoolInitialize)(void* buffer, void* param);
/// Destroys the object in a buffer; the memory stays the pool's. Must not throw nor use the pool.
typedef void (*MORAFastBufferPoolFinalize)(void* buffer, void* param);

/// Makes a pool of buffers of `buffer_size` octets aligned to `alignment` (a power of two). `name` appears in log lines
/// and is not copied. `initialize_once` must be 1: each object is built when its buffer is made. Null, and a log line,
/// when an argument is out of range, memory is exhausted or an object cannot be built. Release with
/// `MORAFastBufferPool_delete`.
DDS_EXPORT MORAFastBufferPool* MORAFastBufferPool_newWithParams(
    std::size_t buffer_size, std::size_t alignment, MORAFastBufferPoolInitialize initialize, void* initialize_param,
    MORAFastBufferPoolFinalize finalize, void* finalize_param, const MORAFastBufferPoolProperty* property,
    const char* name, int initialize_once);
/// An idle buffer, or a new one; null at once when there is neither. `size` is -1 or at most the pool's buffer size.
DDS_EXPORT void* MORAFastBufferPool_getBufferWithSize(MORAFastBufferPool* pool, int size);
/// Gives a buffer of this pool back; the object in it is kept as it is.
DDS_EXPORT void MORAFastBufferPool_returnBuffer(MORAFastBufferPool* pool, void* buffer);
/// Destroys every object and releases the pool; all buffers must have been given back. Null is allowed.
DDS_EXPORT void MORAFastBufferPool_delete(MORAFastBufferPool* pool);
/// How many buffers are idle, for tests and monitoring.
DDS_EXPORT int MORAFastBufferPool_getIdleCount(MORAFastBufferPool* pool);
