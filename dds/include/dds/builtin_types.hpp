#pragma once

#include <dds/domain_participant.hpp>
#include <dds/typed_entities.hpp>

// The four built-in types. A sample of the string type is a `char*`; strings and buffers of the others are made with
// the functions of memory.hpp. A null string cannot be written; a null buffer can, with length 0.

struct DDS_Octets {
  DDS_Long length = 0;
  DDS_Octet* value = nullptr;
};
struct DDS_KeyedString {
  char* key = nullptr;
  char* value = nullptr;
};
struct DDS_KeyedOctets {
  char* key = nullptr;
  DDS_Long length = 0;
  DDS_Octet* value = nullptr;
};

/// How a sequence that owns its elements handles the built-in structures: deeply.
struct DDS_EXPORT DDSBuiltinElement {
  static void initialize(DDS_Octets& element);
  static bool copy(DDS_Octets& destination, const DDS_Octets& source);
  static void finalize(DDS_Octets& element);
  static void initialize(DDS_KeyedString& element);
  static bool copy(DDS_KeyedString& destination, const DDS_KeyedString& source);
  static void finalize(DDS_KeyedString& element);
  static void initialize(DDS_KeyedOctets& element);
  static bool copy(DDS_KeyedOctets& destination, const DDS_KeyedOctets& source);
  static void finalize(DDS_KeyedOctets& element);
};
using DDS_OctetsSeq = DDSSequence<DDS_Octets, DDSBuiltinElement>;
using DDS_KeyedStringSeq = DDSSequence<DDS_KeyedString, DDSBuiltinElement>;
using DDS_KeyedOctetsSeq = DDSSequence<DDS_KeyedOctets, DDSBuiltinElement>;

/// Names a type for code that registers types without knowing them; also the base of an application's own type
/// supports.
class DDS_EXPORT DDSTypeSupport {
 public:
  virtual ~DDSTypeSupport();
};

/// Type support of types that are described at run time. This layer has none yet: the class only tells such a type
/// support apart.
class DDS_EXPORT DDSDynamicDataTypeSupport : public DDSTypeSupport {
 public:
  ~DDSDynamicDataTypeSupport() override;
};

// Each `register_type` registers its built-in type in the participant, under `type_name` or, when that is null, under
// `get_type_name()`; the outcome is that of `DDSDomainParticipant::register_type`, or `DDS_RETCODE_BAD_PARAMETER` for a
// null participant.

class DDS_EXPORT DDSStringTypeSupport : public DDSTypeSupport {
 public:
  static DDS_ReturnCode_t register_type(DDSDomainParticipant* participant, const char* type_name);
  static const char* get_type_name();
};
class DDS_EXPORT DDSKeyedStringTypeSupport : public DDSTypeSupport {
 public:
  static DDS_ReturnCode_t register_type(DDSDomainParticipant* participant, const char* type_name);
  static const char* get_type_name();
};
class DDS_EXPORT DDSOctetsTypeSupport : public DDSTypeSupport {
 public:
  static DDS_ReturnCode_t register_type(DDSDomainParticipant* participant, const char* type_name);
  static const char* get_type_name();
};
class DDS_EXPORT DDSKeyedOctetsTypeSupport : public DDSTypeSupport {
 public:
  static DDS_ReturnCode_t register_type(DDSDomainParticipant* participant, const char* type_name);
  static const char* get_type_name();
};

// Writers and readers on topics of the built-in types are of these classes; `narrow` returns null for any other.

class DDS_EXPORT DDSStringDataWriter : public DDSTypedDataWriter<const char*> {
 public:
  static DDSStringDataWriter* narrow(DDSDataWriter* writer);

 protected:
  ~DDSStringDataWriter() override;
};
class DDS_EXPORT DDSStringDataReader : public DDSTypedDataReader<char*, DDS_StringSeq> {
 public:
  static DDSStringDataReader* narrow(DDSDataReader* reader);

 protected:
  ~DDSStringDataReader() override;
};
class DDS_EXPORT DDSKeyedStringDataWriter : public DDSTypedDataWriter<DDS_KeyedString> {
 public:
  static DDSKeyedStringDataWriter* narrow(DDSDataWriter* writer);

 protected:
  ~DDSKeyedStringDataWriter() override;
};
class DDS_EXPORT DDSKeyedStringDataReader : public DDSTypedDataReader<DDS_KeyedString, DDS_KeyedStringSeq> {
 public:
  static DDSKeyedStringDataReader* narrow(DDSDataReader* reader);

 protected:
  ~DDSKeyedStringDataReader() override;
};
class DDS_EXPORT DDSOctetsDataWriter : public DDSTypedDataWriter<DDS_Octets> {
 public:
  static DDSOctetsDataWriter* narrow(DDSDataWriter* writer);

 protected:
  ~DDSOctetsDataWriter() override;
};
class DDS_EXPORT DDSOctetsDataReader : public DDSTypedDataReader<DDS_Octets, DDS_OctetsSeq> {
 public:
  static DDSOctetsDataReader* narrow(DDSDataReader* reader);

 protected:
  ~DDSOctetsDataReader() override;
};
class DDS_EXPORT DDSKeyedOctetsDataWriter : public DDSTypedDataWriter<DDS_KeyedOctets> {
 public:
  static DDSKeyedOctetsDataWriter* narrow(DDSDataWriter* writer);

 protected:
  ~DDSKeyedOctetsDataWriter() override;
};
class DDS_EXPORT DDSKeyedOctetsDataReader : public DDSTypedDataReader<DDS_KeyedOctets, DDS_KeyedOctetsSeq> {
 public:
  static DDSKeyedOctetsDataReader* narrow(DDSDataReader* reader);

 protected:
  ~DDSKeyedOctetsDataReader() override;
};
