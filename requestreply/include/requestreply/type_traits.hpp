#pragma once

#include <dds/builtin_types.hpp>
#include <requestreply/exception.hpp>
#include <requestreply/sample.hpp>
#include <requestreply/string_data.hpp>
#include <string>

namespace zemtra {

template <class T>
class LoanedSamples;

/// What the typed operations need to know of a data type `T`. Here are the middleware's built-in types; front ends add
/// others. Each has:
///
///   - `DataReader`: the class of the readers that lend; `narrow` gives a reader as one, or null;
///   - `Element`: the middleware's type of a sample, `DataSeq`: a sequence of these; `sample_size`;
///   - `LoanedSamplesType`: what holds a loan;
///   - `Value`: an owning value of a received sample; `to_value` makes one;
///   - `ConstReference`: what a loaned sample's data looks like; `present` gives it. Data of a sample without valid
///   data
///     is never looked at: both give an empty value then;
///   - `register_type`: a `details::RegisterTypeFunction`;
///   - `return_loan`: gives the two sequences of a loan back to a reader; throws nothing;
///   - `Outgoing`: data that is about to be written. `get` is what the untyped operations take, valid while the
///     `Outgoing` and what it was made from are.
template <class T>
struct dds_type_traits;

namespace details {

/// A value that stands for data that is not there.
template <class T>
const T& empty_value() {
  static const T value{};
  return value;
}

/// A deep copy of a received sample, without data when it has none.
template <class T, class Data>
Sample<T> copy_sample(const Data& data, const DDS_SampleInfo& info) {
  if (info.valid_data) { return Sample<T>(data, info); }
  Sample<T> sample;
  sample.info() = info;
  return sample;
}

/// What the traits of all built-in types have in common.
template <class T, class Sampled, class TypeSupport, class Reader, class Seq>
struct BuiltinTraits {
  using DataReader = Reader;
  using Element = Sampled;
  using DataSeq = Seq;
  using LoanedSamplesType = LoanedSamples<T>;
  static constexpr int sample_size = sizeof(Element);

  /// Registers the type under its own name, whatever the type support. Throws.
  static const char* register_type(DDSTypeSupport* /*type_support*/, DDSDomainParticipant* participant) {
    const char* name = TypeSupport::get_type_name();
    const DDS_ReturnCode_t retcode = TypeSupport::register_type(participant, name);
    if (retcode != DDS_RETCODE_OK) {
      check_retcode(retcode, "dds_type_traits::register_type", QVX_LOG_ANY_FAILURE_s, name, false);
    }
    return name;
  }
  static DataReader* narrow(DDSDataReader* reader) { return DataReader::narrow(reader); }
  static DDS_ReturnCode_t return_loan(DataReader& reader, DataSeq& data, DDS_SampleInfoSeq& infos) {
    return reader.return_loan(data, infos);
  }
};

/// The traits of one of the built-in structures. A null string in outgoing data, or a null buffer with a length other
/// than 0, is refused by the write.
template <class T, class TypeSupport, class Reader, class Seq>
struct StructTraits : BuiltinTraits<T, T, TypeSupport, Reader, Seq> {
  using Value = Sample<T>;
  using ConstReference = const T&;

  class Outgoing {
   public:
    explicit Outgoing(const T& value) noexcept : value_(value) {}
    const void* get() const noexcept { return &value_; }

   private:
    const T& value_;
  };

  static ConstReference present(const T& element, const DDS_SampleInfo& info) {
    return info.valid_data ? element : empty_value<T>();
  }
  static Value to_value(const T& element, const DDS_SampleInfo& info) { return copy_sample<T>(element, info); }
};

/// The traits of a string pointer. A null string in outgoing data is refused by the write.
template <class T>
struct StringPointerTraits : BuiltinTraits<T, char*, DDSStringTypeSupport, DDSStringDataReader, DDS_StringSeq> {
  using Value = Sample<T>;
  using ConstReference = const char*;

  class Outgoing {
   public:
    explicit Outgoing(const char* string) noexcept : string_(string) {}
    const void* get() const noexcept { return &string_; }

   private:
    const char* string_;  // not owned
  };

  /// Never null.
  static ConstReference present(char* const& element, const DDS_SampleInfo& info) {
    return info.valid_data && element != nullptr ? element : "";
  }
  static Value to_value(char* const& element, const DDS_SampleInfo& info) {
    return copy_sample<T>(present(element, info), info);
  }
};

/// A check that fails throws `BadParameterException`: a string of the middleware ends with its first NUL.
inline const char* without_nul(const std::string& value) {
  if (value.find('\0') != std::string::npos) {
    check_retcode(DDS_RETCODE_BAD_PARAMETER, "dds_type_traits<std::string>::Outgoing", DDS_LOG_BAD_PARAMETER_s,
                  "a string with an embedded NUL", false);
  }
  return value.c_str();
}

}  // namespace details

template <>
struct dds_type_traits<char*> : details::StringPointerTraits<char*> {};

template <>
struct dds_type_traits<const char*> : details::StringPointerTraits<const char*> {};

template <>
struct dds_type_traits<std::string>
    : details::BuiltinTraits<std::string, char*, DDSStringTypeSupport, DDSStringDataReader, DDS_StringSeq> {
  using Value = std::string;
  using ConstReference = StringData;

  class Outgoing {
   public:
    /// Throws `BadParameterException` when the string has a NUL in it, since it could not be written whole.
    explicit Outgoing(const std::string& value) : string_(details::without_nul(value)) {}
    const void* get() const noexcept { return &string_; }

   private:
    const char* string_;  // not owned
  };

  static ConstReference present(char* const& element, const DDS_SampleInfo& info) {
    return info.valid_data ? StringData(element) : StringData();
  }
  static Value to_value(char* const& element, const DDS_SampleInfo& info) { return present(element, info); }
};

template <>
struct dds_type_traits<DDS_Octets>
    : details::StructTraits<DDS_Octets, DDSOctetsTypeSupport, DDSOctetsDataReader, DDS_OctetsSeq> {};

template <>
struct dds_type_traits<DDS_KeyedString>
    : details::StructTraits<DDS_KeyedString, DDSKeyedStringTypeSupport, DDSKeyedStringDataReader, DDS_KeyedStringSeq> {
};

template <>
struct dds_type_traits<DDS_KeyedOctets>
    : details::StructTraits<DDS_KeyedOctets, DDSKeyedOctetsTypeSupport, DDSKeyedOctetsDataReader, DDS_KeyedOctetsSeq> {
};

}  // namespace zemtra
