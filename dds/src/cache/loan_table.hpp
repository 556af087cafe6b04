#pragma once

#include <cstdint>
#include <dds/sample_info.hpp>
#include <vector>

#include "cache/message.hpp"
#include "util/intrusive_hash.hpp"

namespace dds {

/// Samples lent to the application: the arrays that it sees, and a reference to each sample's message.
struct Loan {
  std::uint64_t address = 0;  // of the pointer array: how a returned loan is recognised
  Loan* next = nullptr;       // in the table or in the idle list
  std::size_t count = 0;      // used elements of the three arrays, which all have the same size
  std::vector<void*> data;
  std::vector<DDS_SampleInfo> infos;
  std::vector<Message*> messages;  // one reference each

  void add(void* sample, Message* message) {
    data[count] = sample;
    messages[count] = message;
    ++count;
  }
};

/// The loans of one reader, found by address at constant cost. The reader's lock guards it.
class LoanTable {
 public:
  LoanTable() = default;
  LoanTable(const LoanTable&) = delete;
  LoanTable& operator=(const LoanTable&) = delete;
  ~LoanTable();

  std::size_t outstanding() const { return table_.size(); }
  /// An empty loan with room for `count` samples that is not outstanding yet. Throws `std::bad_alloc`.
  Loan* prepare(std::size_t count);
  /// Makes a prepared loan outstanding.
  void lend(Loan* loan) { table_.insert(loan); }
  /// Ends the outstanding loan of these arrays and returns it; null when there is none such.
  Loan* end(void** data, const DDS_SampleInfo* infos);
  /// Takes back a loan whose messages have been released.
  void recycle(Loan* loan);

 private:
  // Idle loans kept for reuse, and how large a kept one may be.
  static constexpr std::size_t kMostIdle = 16;
  static constexpr std::size_t kLargestIdle = 1024;

  IntrusiveHash<Loan, &Loan::address, &Loan::next> table_;
  Loan* idle_ = nullptr;
  std::size_t idle_count_ = 0;
};

}  // namespace dds
