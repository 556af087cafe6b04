#include "regressions/topics.hpp"

namespace regressions {
namespace {

TEST(Qos, APropertyWithoutValueIsAsGoodAsNone) {
  const Topics topics;
  DDS_DataReaderQos qos = reliable_reader_qos();
  ASSERT_TRUE(qos.property.value.ensure_length(1, 1));
  qos.property.value[0].name = DDS_String_dup("dds.data_reader.history.generate_not_alive_no_writers_sample");
  EXPECT_NE(make_reader(topics.strings, qos), nullptr);
}

}  // namespace
}  // namespace regressions
