#include "cache/loan_table.hpp"

#include <memory>

namespace dds {

LoanTable::~LoanTable() {
  while (idle_ != nullptr) {
    Loan* next = idle_->next;
    delete idle_;
    idle_ = next;
  }
}

Loan* LoanTable::prepare(std::size_t count) {
  table_.reserve_one();
  std::unique_ptr<Loan> loan(idle_);
  if (loan != nullptr) {
    idle_ = loan->next;
    --idle_count_;
  } else {
    loan = std::make_unique<Loan>();
  }
  if (loan->data.size() < count) {
    loan->data.resize(count);
    loan->infos.resize(count);
    loan->messages.resize(count);
    loan->address = reinterpret_cast<std::uintptr_t>(loan->data.data());
  }
  loan->count = 0;
  return loan.release();
}

Loan* LoanTable::end(void** data, const DDS_SampleInfo* infos) {
  Loan* loan = table_.find(reinterpret_cast<std::uintptr_t>(data));
  if (loan == nullptr || loan->infos.data() != infos) { return nullptr; }
  table_.erase(loan);
  return loan;
}

void LoanTable::recycle(Loan* loan) {
  if (idle_count_ == kMostIdle || loan->data.size() > kLargestIdle) {
    delete loan;
    return;
  }
  loan->next = idle_;
  idle_ = loan;
  ++idle_count_;
}

}  // namespace dds
