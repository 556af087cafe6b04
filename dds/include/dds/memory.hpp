#pragma once

#include <cstddef>

#include <dds/basic_types.hpp>
#include <dds/export.hpp>

// Memory of strings and octet buffers that DDS data types own. Every buffer is 32-byte aligned, because copies between
// buffers of unlike alignment cost many times more. All functions are thread-safe and never throw.

/// A string of `length` characters, all NUL, with its terminator; null when memory is exhausted. Release with
/// `DDS_String_free`.
DDS_EXPORT char* DDS_String_alloc(std::size_t length);
/// A copy of `source`; null when `source` is null or memory is exhausted. Release with `DDS_String_free`.
DDS_EXPORT char* DDS_String_dup(const char* source);
/// Releases what `*target` holds and makes it a copy of `source`; null when `source` is null or memory is exhausted.
/// `source` may lie in `*target`. Returns `*target`.
DDS_EXPORT char* DDS_String_replace(char** target, const char* source);
/// Releases a string of the functions above; null is allowed.
DDS_EXPORT void DDS_String_free(char* string);

/// `size` octets of zero; null when memory is exhausted. Size 0 gives a buffer that may not be dereferenced. Release
/// with `DDS_OctetBuffer_free`.
DDS_EXPORT DDS_Octet* DDS_OctetBuffer_alloc(std::size_t size);
/// A copy of `size` octets; null when `buffer` is null or memory is exhausted. Release with `DDS_OctetBuffer_free`.
DDS_EXPORT DDS_Octet* DDS_OctetBuffer_dup(const DDS_Octet* buffer, std::size_t size);
/// Releases a buffer of the functions above; null is allowed.
DDS_EXPORT void DDS_OctetBuffer_free(DDS_Octet* buffer);
