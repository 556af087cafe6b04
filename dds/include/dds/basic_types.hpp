#pragma once

#include <cstdint>

// The elementary types and codes of the classic DDS mapping. The numeric values are those of the DDS standard.

using DDS_Boolean = bool;
using DDS_Long = std::int32_t;
using DDS_UnsignedLong = std::uint32_t;
using DDS_LongLong = std::int64_t;
using DDS_Octet = unsigned char;
using DDS_DomainId_t = std::int32_t;

/// A count or a limit without bound.
constexpr DDS_Long DDS_LENGTH_UNLIMITED = -1;

/// The outcome of an operation. `DDS_RETCODE_NO_DATA` and `DDS_RETCODE_TIMEOUT` are results rather than faults.
enum DDS_ReturnCode_t : int {
  DDS_RETCODE_OK = 0,
  DDS_RETCODE_ERROR = 1,
  DDS_RETCODE_UNSUPPORTED = 2,
  DDS_RETCODE_BAD_PARAMETER = 3,
  DDS_RETCODE_PRECONDITION_NOT_MET = 4,
  DDS_RETCODE_OUT_OF_RESOURCES = 5,
  DDS_RETCODE_NOT_ENABLED = 6,
  DDS_RETCODE_IMMUTABLE_POLICY = 7,
  DDS_RETCODE_INCONSISTENT_POLICY = 8,
  DDS_RETCODE_ALREADY_DELETED = 9,
  DDS_RETCODE_TIMEOUT = 10,
  DDS_RETCODE_NO_DATA = 11,
  DDS_RETCODE_ILLEGAL_OPERATION = 12
};

/// A local name of an instance or of an entity; only equality means anything.
using DDS_InstanceHandle_t = std::uint64_t;
constexpr DDS_InstanceHandle_t DDS_HANDLE_NIL = 0;

using DDS_SampleStateMask = unsigned int;
constexpr DDS_SampleStateMask DDS_READ_SAMPLE_STATE = 1;
constexpr DDS_SampleStateMask DDS_NOT_READ_SAMPLE_STATE = 2;
constexpr DDS_SampleStateMask DDS_ANY_SAMPLE_STATE = 0xffff;

using DDS_ViewStateMask = unsigned int;
constexpr DDS_ViewStateMask DDS_NEW_VIEW_STATE = 1;
constexpr DDS_ViewStateMask DDS_NOT_NEW_VIEW_STATE = 2;
constexpr DDS_ViewStateMask DDS_ANY_VIEW_STATE = 0xffff;

using DDS_InstanceStateMask = unsigned int;
constexpr DDS_InstanceStateMask DDS_ALIVE_INSTANCE_STATE = 1;
constexpr DDS_InstanceStateMask DDS_NOT_ALIVE_DISPOSED_INSTANCE_STATE = 2;
constexpr DDS_InstanceStateMask DDS_NOT_ALIVE_NO_WRITERS_INSTANCE_STATE = 4;
constexpr DDS_InstanceStateMask DDS_NOT_ALIVE_INSTANCE_STATE = 6;
constexpr DDS_InstanceStateMask DDS_ANY_INSTANCE_STATE = 0xffff;

using DDS_StatusMask = unsigned int;
constexpr DDS_StatusMask DDS_STATUS_MASK_NONE = 0;
constexpr DDS_StatusMask DDS_OFFERED_INCOMPATIBLE_QOS_STATUS = 1u << 5;
constexpr DDS_StatusMask DDS_REQUESTED_INCOMPATIBLE_QOS_STATUS = 1u << 6;
constexpr DDS_StatusMask DDS_SAMPLE_LOST_STATUS = 1u << 7;
constexpr DDS_StatusMask DDS_SAMPLE_REJECTED_STATUS = 1u << 8;
constexpr DDS_StatusMask DDS_DATA_AVAILABLE_STATUS = 1u << 10;
constexpr DDS_StatusMask DDS_PUBLICATION_MATCHED_STATUS = 1u << 13;
constexpr DDS_StatusMask DDS_SUBSCRIPTION_MATCHED_STATUS = 1u << 14;
constexpr DDS_StatusMask DDS_STATUS_MASK_ALL = 0xffffffffu;
