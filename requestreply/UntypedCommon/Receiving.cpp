#include <dds/domain_participant.hpp>
#include <dds/procedural.hpp>
#include <limits>
#include <requestreply/entity_untyped_impl.hpp>

#include "internal/check.hpp"
#include "internal/log.hpp"

namespace zemtra {
namespace details {

namespace {

void require(bool condition, const char* method_name, const char* msg) {
  if (!condition) { fail(DDS_RETCODE_BAD_PARAMETER, method_name, DDS_LOG_BAD_PARAMETER_s, msg); }
}

}  // namespace

void init_sample_info(DDS_SampleInfo& info) { info.valid_data = false; }

void EntityUntypedImpl::validate(int min_count, int max_count, DDS_Duration_t max_wait) const {
  constexpr const char* method_name = "EntityUntypedImpl::validate";
  if (max_count == DDS_LENGTH_UNLIMITED) { max_count = max_samples_per_read; }
  if (min_count == DDS_LENGTH_UNLIMITED) { min_count = max_samples_per_read; }
  const bool bounded = max_count != DDS_LENGTH_UNLIMITED;
  require(!bounded || max_count > 0, method_name, "max_count must be greater than zero");
  if (bounded) {
    require(min_count <= max_count && min_count != DDS_LENGTH_UNLIMITED, method_name,
            "max_count must be greater or equal than min_count");
  }
  require(max_wait != DDS_DURATION_ZERO, method_name, "max_wait must be greater than zero");
  require(bounded || max_wait != DDS_DURATION_INFINITE, method_name, "max_count and max_wait cannot be both unbounded");
}

bool EntityUntypedImpl::get_sample_loaned(void*** received_data, int* data_count, DDS_SampleInfoSeq& info_seq,
                                          int data_seq_len, int data_seq_max_len, unsigned char data_seq_has_ownership,
                                          int max_samples, DDSReadCondition* read_condition, bool take) {
  DDS_ReadCondition* condition_handle = read_condition->procedural_handle();
  DDS_DataReader* reader_handle = reader->procedural_handle();
  DDS_Boolean is_loan = false;
  const DDS_ReturnCode_t retcode = DDS_DataReader_read_or_take_w_condition_untypedI(
      reader_handle, &is_loan, received_data, data_count, &info_seq, data_seq_len, data_seq_max_len,
      data_seq_has_ownership, nullptr, sample_size, max_samples, condition_handle, take);
  return check(retcode, "EntityUntypedImpl::get_sample_loaned", QVX_LOG_ANY_FAILURE_s, "read from DataReader");
}

bool EntityUntypedImpl::get_sample_loaned(void*** received_data, int* data_count, DDS_SampleInfoSeq& info_seq,
                                          int max_samples, bool take, DDSReadCondition* read_condition) {
  require(max_samples >= 0 || max_samples == DDS_LENGTH_UNLIMITED, "EntityUntypedImpl::get_sample_loaned",
          "max_samples");
  return get_sample_loaned(received_data, data_count, info_seq, 0, 0, true, max_samples,
                           read_condition != nullptr ? read_condition : any_sample_condition, take);
}

int EntityUntypedImpl::touch_samples(int max_count, DDSReadCondition* read_condition) {
  DDS_SampleInfoSeq infos;
  void** data = nullptr;
  int count = 0;
  if (get_sample_loaned(&data, &count, infos, 0, 0, true, max_count, read_condition, false)) {
    return_loan(data, infos);
  }
  return count;
}

bool EntityUntypedImpl::wait_for_samples(const DDS_Duration_t& max_wait, int min_count, DDSWaitSet& set,
                                         DDSReadCondition* initial_condition, DDSReadCondition* read_condition) {
  constexpr const char* method_name = "EntityUntypedImpl::wait_for_samples";
  DDS_Duration_t remaining = max_wait;
  // The triggered conditions are of no interest; a lent buffer for one saves the wait from allocating room for them.
  DDSCondition* triggered[1] = {};
  DDSConditionSeq active_conditions;
  active_conditions.loan_contiguous(triggered, 0, 1);

  if (min_count == DDS_LENGTH_UNLIMITED) { min_count = std::numeric_limits<int>::max(); }
  min_count -= touch_samples(min_count, initial_condition);
  while (min_count > 0) {
    // A last missing sample is never touched: the wait that succeeds is proof of it and ends the loop.
    const bool last = min_count == 1;
    DDS_Time_t before;
    if (!last) { participant->get_current_time(before); }
    const DDS_ReturnCode_t retcode = set.wait(active_conditions, remaining);
    if (!last) {
      DDS_Time_t after;
      participant->get_current_time(after);
      // May become negative, which the wait treats as no time.
      remaining = remaining - (after - before);
    }
    if (retcode == DDS_RETCODE_TIMEOUT) {
      log(DDS_LOG_LEVEL_INFORMATION, method_name, QVX_LOG_ANY_s, "timed out waiting for data");
      return false;
    }
    check(retcode, method_name, QVX_LOG_ANY_FAILURE_s, "wait for samples");
    min_count -= last ? 1 : touch_samples(min_count, read_condition);
  }
  return true;
}

bool EntityUntypedImpl::wait_for_any_sample(const DDS_Duration_t& max_wait, int min_count) {
  return wait_for_samples(max_wait, min_count, waitset, any_sample_condition, not_read_condition);
}

bool EntityUntypedImpl::receive_sample_loaned(void*** received_data, int* data_count, DDS_SampleInfoSeq& info_seq,
                                              int max_count, const DDS_Duration_t& max_wait, int min_count) {
  validate(min_count, max_count, max_wait);
  if (!wait_for_any_sample(max_wait, min_count)) {
    *data_count = 0;
    return false;
  }
  return get_sample_loaned(received_data, data_count, info_seq, 0, 0, true, max_count, any_sample_condition, true);
}

void EntityUntypedImpl::return_loan(void** received_data, DDS_SampleInfoSeq& info_seq) {
  if (DDS_DataReader_return_loan_untypedI(reader->procedural_handle(), received_data, &info_seq) != DDS_RETCODE_OK) {
    log(DDS_LOG_LEVEL_FAILURE, "EntityUntypedImpl::return_loan", QVX_LOG_ANY_FAILURE_s, "return DataReader loan");
  }
}

}  // namespace details
}  // namespace zemtra
