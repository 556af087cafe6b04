#include <dds/builtin_types.hpp>

#include "log/log.hpp"
#include "types/builtin_plugins.hpp"

namespace {

DDS_ReturnCode_t register_builtin(DDSDomainParticipant* participant, const char* type_name, const char* builtin_name,
                                  const DDS_TypePlugin& plugin) {
  if (participant == nullptr) {
    DDS_LOG_FAILURE("DDSTypeSupport::register_type", DDS_LOG_BAD_PARAMETER_s, "null participant for type %s",
                    builtin_name);
    return DDS_RETCODE_BAD_PARAMETER;
  }
  return participant->register_type(type_name != nullptr ? type_name : builtin_name, plugin);
}

}  // namespace

DDSTypeSupport::~DDSTypeSupport() = default;
DDSDynamicDataTypeSupport::~DDSDynamicDataTypeSupport() = default;

DDS_ReturnCode_t DDSStringTypeSupport::register_type(DDSDomainParticipant* participant, const char* type_name) {
  return register_builtin(participant, type_name, get_type_name(), dds::string_plugin);
}

const char* DDSStringTypeSupport::get_type_name() { return "DDS::String"; }

DDS_ReturnCode_t DDSKeyedStringTypeSupport::register_type(DDSDomainParticipant* participant, const char* type_name) {
  return register_builtin(participant, type_name, get_type_name(), dds::keyed_string_plugin);
}

const char* DDSKeyedStringTypeSupport::get_type_name() { return "DDS::KeyedString"; }

DDS_ReturnCode_t DDSOctetsTypeSupport::register_type(DDSDomainParticipant* participant, const char* type_name) {
  return register_builtin(participant, type_name, get_type_name(), dds::octets_plugin);
}

const char* DDSOctetsTypeSupport::get_type_name() { return "DDS::Octets"; }

DDS_ReturnCode_t DDSKeyedOctetsTypeSupport::register_type(DDSDomainParticipant* participant, const char* type_name) {
  return register_builtin(participant, type_name, get_type_name(), dds::keyed_octets_plugin);
}

const char* DDSKeyedOctetsTypeSupport::get_type_name() { return "DDS::KeyedOctets"; }

DDSStringDataWriter* DDSStringDataWriter::narrow(DDSDataWriter* writer) {
  return dynamic_cast<DDSStringDataWriter*>(writer);
}

DDSStringDataWriter::~DDSStringDataWriter() = default;

DDSStringDataReader* DDSStringDataReader::narrow(DDSDataReader* reader) {
  return dynamic_cast<DDSStringDataReader*>(reader);
}

DDSStringDataReader::~DDSStringDataReader() = default;

DDSKeyedStringDataWriter* DDSKeyedStringDataWriter::narrow(DDSDataWriter* writer) {
  return dynamic_cast<DDSKeyedStringDataWriter*>(writer);
}

DDSKeyedStringDataWriter::~DDSKeyedStringDataWriter() = default;

DDSKeyedStringDataReader* DDSKeyedStringDataReader::narrow(DDSDataReader* reader) {
  return dynamic_cast<DDSKeyedStringDataReader*>(reader);
}

DDSKeyedStringDataReader::~DDSKeyedStringDataReader() = default;

DDSOctetsDataWriter* DDSOctetsDataWriter::narrow(DDSDataWriter* writer) {
  return dynamic_cast<DDSOctetsDataWriter*>(writer);
}

DDSOctetsDataWriter::~DDSOctetsDataWriter() = default;

DDSOctetsDataReader* DDSOctetsDataReader::narrow(DDSDataReader* reader) {
  return dynamic_cast<DDSOctetsDataReader*>(reader);
}

DDSOctetsDataReader::~DDSOctetsDataReader() = default;

DDSKeyedOctetsDataWriter* DDSKeyedOctetsDataWriter::narrow(DDSDataWriter* writer) {
  return dynamic_cast<DDSKeyedOctetsDataWriter*>(writer);
}

DDSKeyedOctetsDataWriter::~DDSKeyedOctetsDataWriter() = default;

DDSKeyedOctetsDataReader* DDSKeyedOctetsDataReader::narrow(DDSDataReader* reader) {
  return dynamic_cast<DDSKeyedOctetsDataReader*>(reader);
}

DDSKeyedOctetsDataReader::~DDSKeyedOctetsDataReader() = default;
