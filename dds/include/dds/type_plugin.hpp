#pragma once

#include <cstddef>

#include <dds/export.hpp>

/// All that the layer needs to know of a data type: a table of functions, registered by name with
/// `DDSDomainParticipant::register_type`. None of the functions may throw, nor call into this layer, which calls some
/// of them under its locks. They are called from any thread, never for one sample by two threads at once unless all of
/// them only read it.
///
/// "Own" samples are those that the layer constructs and reuses. A plugin may keep more in them than the application
/// sees, as long as the application's view of a sample lies at the beginning: that is how memory is reused from one
/// write to the next.
struct DDS_TypePlugin {
  std::size_t size;       ///< octets of an own sample
  std::size_t alignment;  ///< of an own sample, a power of two
  /// Makes an own sample in raw memory; false when memory is exhausted.
  bool (*construct)(void* sample);
  /// Ends an own sample.
  void (*destroy)(void* sample);
  /// Makes the own sample `destination` equal to `source`, the application's or an own sample, reusing its memory.
  /// False when memory is exhausted or `source` cannot be written (a null string, say); `destination` is then in a
  /// state that can be copied to again.
  bool (*copy)(void* destination, const void* source);
  /// Octets that `serialize` writes. Both take the application's samples, if they can be written, and own ones.
  std::size_t (*serialized_size)(const void* sample);
  /// Writes the sample as CDR with its 4-octet encapsulation header; false when `capacity` is too small.
  bool (*serialize)(const void* sample, unsigned char* buffer, std::size_t capacity);
  /// Fills an own sample from CDR, whatever the octets are; never reads beyond `length` and never allocates more than a
  /// small multiple of it. False when they are no sample of this type.
  bool (*deserialize)(void* sample, const unsigned char* buffer, std::size_t length);

  // The rest is optional (null).

  /// The key as octets that are equal exactly for equal keys: returns their number and writes them when `capacity`
  /// suffices; the largest number of all when memory is exhausted. Null for a type without key.
  std::size_t (*key)(const void* sample, unsigned char* buffer, std::size_t capacity);
  /// Copies the key into an own sample, of which nobody will look at the rest: it becomes empty, or what it is in
  /// `source`. False when memory is exhausted. Set exactly when `key` is.
  bool (*copy_key)(void* destination, const void* source);
  /// The number of the string member `name`, for filter expressions; negative when there is none.
  int (*find_string_member)(const char* name);
  /// The string member with that number; null when the sample has none. Set exactly when `find_string_member` is.
  const char* (*string_member)(const void* sample, int member);
  /// Whether `source`, the application's, can be written at all: tells the two failures of `copy` apart. Null: always.
  bool (*writable)(const void* source);
};
