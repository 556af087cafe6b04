#include "regressions/participant.hpp"

namespace regressions {
namespace {

class Qos : public Participant {};

TEST_F(Qos, APropertyWithoutValueIsAsGoodAsNone) {
  DDS_DataReaderQos qos = reliable_reader_qos();
  ASSERT_TRUE(qos.property.value.ensure_length(1, 1));
  qos.property.value[0].name = DDS_String_dup("dds.data_reader.history.generate_not_alive_no_writers_sample");
  EXPECT_NE(create_reader(strings, qos), nullptr);
}

}  // namespace
}  // namespace regressions
