#pragma once

#include <memory>

#include <dds/data_reader.hpp>
#include <dds/sequence.hpp>
#include <requestreply/loaned_samples.hpp>
#include <requestreply/type_traits.hpp>
#include <zemtra/details/application_type.hpp>
#include <zemtra/details/type_name.hpp>

namespace zemtra {

/// How a type of the application is carried; built-in types have traits of their own.
///
/// T is an aggregate (without base class, with 100 members at the most) of numbers of up to 8 octets, bools, enums with
/// a fixed underlying type, `std::string`, other aggregates, and `std::vector`, `std::array`, `std::optional` of these.
/// Anything else is a compile error, which names `member_cannot_be_carried<Aggregate, Position, Member>`.
///
/// Both ends must use one type name: `T::dds_type_name` if there is such a `static constexpr const char*`, the C++ name
/// with its namespaces otherwise. A participant, and participants of one process, take two types of one name for one
/// type only if they are handled by the same functions: so of several shared libraries that use T with hidden
/// visibility, one should make its readers and writers. Samples are values of T, copied by its assignment; if that
/// throws, the write fails. Between processes they are CDR.
///
/// For what the members are see `<requestreply/type_traits.hpp>`.
template <class T>
struct dds_type_traits {
  using DataReader = DDSDataReader;
  using Element = T;
  using DataSeq = DDSSequence<T>;
  using LoanedSamplesType = LoanedSamples<T>;
  using Value = T;
  using ConstReference = const T&;
  using Codec = details::CodecOf<T>;  // looked at first: what is not carried is said here

  static constexpr int sample_size = static_cast<int>(sizeof(Element));

  /// Registers T and returns its name, which lives for ever. Throws the exception of what the participant returns.
  static const char* register_type(DDSTypeSupport* /*type_support*/, DDSDomainParticipant* participant) {
    return details::register_application_type(participant, details::type_name<T>(), details::plugin_of<T>());
  }
  static DataReader* narrow(DDSDataReader* reader) noexcept { return reader; }
  static DDS_ReturnCode_t return_loan(DataReader& reader, DataSeq& data, DDS_SampleInfoSeq& infos) noexcept {
    void** const samples = reinterpret_cast<void**>(data.get_discontiguous_buffer());
    const DDS_ReturnCode_t retcode = reader.return_loan_untyped(samples, infos);
    if (retcode == DDS_RETCODE_OK) { data.unloan(); }
    return retcode;
  }

  class Outgoing {
   public:
    explicit Outgoing(const T& value) noexcept : sample_(std::addressof(value)) {}
    const void* get() const noexcept { return sample_; }

   private:
    const void* sample_;  // borrowed
  };

  static ConstReference present(const Element& element, const DDS_SampleInfo& info) {
    return info.valid_data ? element : details::empty_value<T>();
  }
  static Value to_value(const Element& element, const DDS_SampleInfo& info) { return present(element, info); }
};

}  // namespace zemtra
