#pragma once

#include <cstddef>
#include <iterator>
#include <requestreply/export.hpp>
#include <requestreply/type_traits.hpp>
#include <string>
#include <utility>

namespace zemtra {

/// One sample of a loan, as cheap to copy as two pointers. Valid until the loan is given back, also when the container
/// has been moved meanwhile.
template <class T>
class LoanedSample {
  using Traits = dds_type_traits<T>;

 public:
  using Element = typename Traits::Element;

  /// `element` may be null; for a sample without valid data it is not looked at.
  LoanedSample(const Element* element, const DDS_SampleInfo* info) noexcept : element_(element), info_(info) {}

  /// The data where it lies; an empty value when there is none.
  typename Traits::ConstReference data() const {
    return Traits::present(element_ != nullptr ? *element_ : details::empty_value<Element>(), *info_);
  }
  const DDS_SampleInfo& info() const noexcept { return *info_; }
  /// False for a sample that only tells of a change of its instance's state.
  bool has_data() const noexcept { return info_->valid_data; }
  /// The sample's own identity.
  DDS_SampleIdentity_t identity() const { return details::identity_of(*info_); }
  /// The identity of the sample that this one answers.
  DDS_SampleIdentity_t related_identity() const { return info_->related_sample_identity; }
  /// A copy of the data that outlives the loan.
  typename Traits::Value value() const {
    return Traits::to_value(element_ != nullptr ? *element_ : details::empty_value<Element>(), *info_);
  }
  /// A deep copy that outlives the loan.
  operator Sample<T>() const { return details::copy_sample<T>(data(), *info_); }

 private:
  const Element* element_;      // the reader's
  const DDS_SampleInfo* info_;  // the reader's
};

template <class T>
class LoanedSamples;

namespace details {

/// Makes a container of a loan: of `count` samples, to which `data_ptrs` points, and as many infos. Nothing is copied,
/// and no sample is looked at. Takes the infos over, leaving `info_seq` new and empty. Throws `BadParameterException`
/// when `reader`, which lent them, is null; the loan is then still the caller's.
template <class T>
typename dds_type_traits<T>::LoanedSamplesType create_loaned_samples(void** data_ptrs, int count,
                                                                     DDS_SampleInfoSeq& info_seq,
                                                                     typename dds_type_traits<T>::DataReader* reader);

/// Logs that a reader has refused to take a loan back. Never throws.
ZEMTRA_EXPORT void log_refused_loan() noexcept;

}  // namespace details

/// A loan of a reader, which it goes back to when the container is destroyed or is assigned another. The samples stay
/// in the reader's memory. Has one owner, which moves hand on; one thread at a time may use a container. The reader
/// must not be deleted before.
template <class T>
class LoanedSamples {
  using Traits = dds_type_traits<T>;

 public:
  using DataSeq = typename Traits::DataSeq;
  using DataReader = typename Traits::DataReader;
  using value_type = LoanedSample<T>;

  /// Goes over the samples of a container, which must not be moved meanwhile.
  class const_iterator {
   public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = LoanedSample<T>;
    using difference_type = std::ptrdiff_t;
    using reference = LoanedSample<T>;
    /// Holds the sample that `->` leads to.
    class pointer {
     public:
      explicit pointer(const LoanedSample<T>& sample) : sample_(sample) {}
      const LoanedSample<T>* operator->() const { return &sample_; }

     private:
      LoanedSample<T> sample_;
    };

    const_iterator() noexcept = default;
    const_iterator(const LoanedSamples& samples, difference_type position) noexcept
        : samples_(&samples), position_(position) {}

    reference operator*() const { return (*samples_)[static_cast<int>(position_)]; }
    pointer operator->() const { return pointer(**this); }
    reference operator[](difference_type offset) const { return *(*this + offset); }
    const_iterator& operator+=(difference_type offset) noexcept {
      position_ += offset;
      return *this;
    }
    const_iterator& operator-=(difference_type offset) noexcept { return *this += -offset; }
    const_iterator& operator++() noexcept { return *this += 1; }
    const_iterator& operator--() noexcept { return *this += -1; }
    // NOLINTBEGIN(cert-dcl21-cpp): a constant result would not be an iterator.
    const_iterator operator++(int) noexcept { return std::exchange(*this, *this + 1); }
    const_iterator operator--(int) noexcept { return std::exchange(*this, *this - 1); }
    // NOLINTEND(cert-dcl21-cpp)

    friend const_iterator operator+(const_iterator it, difference_type offset) noexcept { return it += offset; }
    friend const_iterator operator+(difference_type offset, const_iterator it) noexcept { return it += offset; }
    friend const_iterator operator-(const_iterator it, difference_type offset) noexcept { return it -= offset; }
    friend difference_type operator-(const_iterator a, const_iterator b) noexcept { return a.position_ - b.position_; }
    friend bool operator==(const_iterator a, const_iterator b) noexcept { return a.position_ == b.position_; }
    friend bool operator!=(const_iterator a, const_iterator b) noexcept { return a.position_ != b.position_; }
    friend bool operator<(const_iterator a, const_iterator b) noexcept { return a.position_ < b.position_; }
    friend bool operator>(const_iterator a, const_iterator b) noexcept { return a.position_ > b.position_; }
    friend bool operator<=(const_iterator a, const_iterator b) noexcept { return a.position_ <= b.position_; }
    friend bool operator>=(const_iterator a, const_iterator b) noexcept { return a.position_ >= b.position_; }

   private:
    const LoanedSamples* samples_ = nullptr;
    difference_type position_ = 0;
  };
  using iterator = const_iterator;

  /// Holds no loan.
  LoanedSamples() noexcept = default;
  /// Leaves `other` empty.
  LoanedSamples(LoanedSamples&& other) noexcept { swap(other); }
  /// Gives the own loan back and leaves `other` empty.
  LoanedSamples& operator=(LoanedSamples&& other) noexcept {
    LoanedSamples taken(std::move(other));
    swap(taken);
    return *this;
  }
  LoanedSamples(const LoanedSamples&) = delete;
  LoanedSamples& operator=(const LoanedSamples&) = delete;
  ~LoanedSamples() { return_loan(); }

  /// Gives the loan back at once and leaves the container empty; does nothing when there is none. A refusal of the
  /// reader is logged.
  void return_loan() noexcept {
    if (reader_ == nullptr || data_.has_ownership() || infos_.has_ownership()) { return; }
    if (Traits::return_loan(*reader_, data_, infos_) != DDS_RETCODE_OK) { details::log_refused_loan(); }
    // What the reader has taken back is empty already.
    if (!data_.has_ownership()) { data_ = DataSeq(); }
    if (!infos_.has_ownership()) { infos_ = DDS_SampleInfoSeq(); }
    reader_ = nullptr;
  }

  int length() const noexcept { return data_.length(); }
  std::size_t size() const noexcept { return static_cast<std::size_t>(length()); }
  bool empty() const noexcept { return length() == 0; }
  /// The index is not checked.
  LoanedSample<T> operator[](int i) const {
    using Element = typename Traits::Element;
    // Not through the sequence's operator, which would dereference a null pointer of a sample without data.
    Element* const* pointers = data_.get_discontiguous_buffer();
    const Element* element = pointers != nullptr ? pointers[i] : data_.get_contiguous_buffer() + i;
    return LoanedSample<T>(element, &infos_[i]);
  }
  const_iterator begin() const noexcept { return const_iterator(*this, 0); }
  const_iterator end() const noexcept { return const_iterator(*this, length()); }

  void swap(LoanedSamples& other) noexcept {
    data_.swap(other.data_);
    infos_.swap(other.infos_);
    std::swap(reader_, other.reader_);
  }

 private:
  friend typename dds_type_traits<T>::LoanedSamplesType details::create_loaned_samples<T>(
      void** data_ptrs, int count, DDS_SampleInfoSeq& info_seq, typename dds_type_traits<T>::DataReader* reader);

  explicit LoanedSamples(DataReader* reader) noexcept : reader_(reader) {}

  /// Takes both sequences over and leaves them empty.
  static LoanedSamples move_construct_from_loans(DataSeq& data, DDS_SampleInfoSeq& infos, DataReader* reader) {
    if (reader == nullptr) {
      check_retcode(DDS_RETCODE_BAD_PARAMETER, "LoanedSamples::move_construct_from_loans", DDS_LOG_BAD_PARAMETER_s,
                    "reader", false);
    }
    LoanedSamples samples(reader);
    samples.data_.swap(data);
    samples.infos_.swap(infos);
    return samples;
  }

  DataSeq data_;                  // refers to the reader's samples
  DDS_SampleInfoSeq infos_;       // refers to the reader's infos
  DataReader* reader_ = nullptr;  // not owned; null without a loan
};

namespace details {

template <class T>
typename dds_type_traits<T>::LoanedSamplesType create_loaned_samples(void** data_ptrs, int count,
                                                                     DDS_SampleInfoSeq& info_seq,
                                                                     typename dds_type_traits<T>::DataReader* reader) {
  typename dds_type_traits<T>::DataSeq data;
  // What a sequence refuses to refer to is not given back by the container, which then owns an empty one.
  static_cast<void>(
      data.loan_discontiguous(reinterpret_cast<typename dds_type_traits<T>::Element**>(data_ptrs), count, count));
  return LoanedSamples<T>::move_construct_from_loans(data, info_seq, reader);
}

extern template ZEMTRA_EXPORT dds_type_traits<std::string>::LoanedSamplesType create_loaned_samples<std::string>(
    void** data_ptrs, int count, DDS_SampleInfoSeq& info_seq, dds_type_traits<std::string>::DataReader* reader);

}  // namespace details
}  // namespace zemtra
