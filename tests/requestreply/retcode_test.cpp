#include <array>

#include "requestreply/fixture.hpp"

namespace {

using requestreply_test::FailureLine;
using requestreply_test::thrown_by;
using support::LogRecorder;
using zemtra::check_retcode;

struct Mapping {
  int retcode;
  const std::type_info* exception;
};
const Mapping kMappings[] = {{0, &typeid(zemtra::RuntimeException)},
                             {1, &typeid(zemtra::RuntimeException)},
                             {2, &typeid(zemtra::UnsupportedException)},
                             {3, &typeid(zemtra::BadParameterException)},
                             {4, &typeid(zemtra::PreconditionNotMetException)},
                             {5, &typeid(zemtra::OutOfResourcesException)},
                             {6, &typeid(zemtra::NotEnabledException)},
                             {7, &typeid(zemtra::ImmutablePolicyException)},
                             {8, &typeid(zemtra::InconsistentPolicyException)},
                             {9, &typeid(zemtra::AlreadyDeletedException)},
                             {10, &typeid(zemtra::TimeoutException)},
                             {11, &typeid(zemtra::RuntimeException)},
                             {12, &typeid(zemtra::IllegalOperationException)},
                             {13, &typeid(zemtra::RuntimeException)},
                             {2147483647, &typeid(zemtra::RuntimeException)},
                             {-1, &typeid(zemtra::RuntimeException)}};

TEST(Retcodes, AreThrownAsTheirClassWithTheMessageAsItIsOrCheckedWithOneLogLine) {
  for (const Mapping& mapping : kMappings) {
    SCOPED_TRACE(mapping.retcode);
    const auto retcode = static_cast<DDS_ReturnCode_t>(mapping.retcode);
    const LogRecorder log;
    EXPECT_EQ(thrown_by([&] { zemtra::throw_retcode(retcode, "100 %s"); }),
              std::pair(mapping.exception, std::string("100 %s")));
    EXPECT_THAT(log.lines(), ::testing::IsEmpty());
    if (retcode == DDS_RETCODE_OK || retcode == DDS_RETCODE_NO_DATA) { continue; }
    const auto [type, msg] = thrown_by([&] {
      check_retcode(retcode, "EntityParams::validate", DDS_LOG_BAD_PARAMETER_s, "NULL participant",
                    retcode == DDS_RETCODE_TIMEOUT);
    });
    EXPECT_EQ(*type, *mapping.exception);
    const std::string text = support::filled(DDS_LOG_BAD_PARAMETER_s, "NULL participant");
    EXPECT_EQ(msg, "EntityParams::validate:" + text);
    ASSERT_EQ(log.lines().size(), 1u);
    const support::LogLine line = log.lines()[0];
    EXPECT_THAT(line, FailureLine("requestreply/Exception", "EntityParams::validate", text));
    EXPECT_EQ(line.log_template, &DDS_LOG_BAD_PARAMETER_s);
  }
}

TEST(CheckRetcode, TellsSuccessFromNothingThereAndLogsNeither) {
  const LogRecorder log;
  for (const bool throw_on_timeout : {false, true}) {
    EXPECT_TRUE(check_retcode(DDS_RETCODE_OK, "C", QVX_LOG_ANY_FAILURE_s, "M", throw_on_timeout));
    EXPECT_FALSE(check_retcode(DDS_RETCODE_NO_DATA, "C", QVX_LOG_ANY_FAILURE_s, "M", throw_on_timeout));
  }
  EXPECT_FALSE(check_retcode(DDS_RETCODE_TIMEOUT, "C", QVX_LOG_ANY_FAILURE_s, "M", false));
  EXPECT_THAT(log.lines(), ::testing::IsEmpty());
}

TEST(CheckRetcode, PutsTheMessageInPlaceOfTheFirstPlaceholderOnly) {
  const LogRecorder log;
  const std::array<std::string, 3> cases[] = {{"a %s b", "M", "C:a M b"},
                                              {"%s", "", "C:"},
                                              {"%s and %s", "M", "C:M and %s"},
                                              {"%s", "%s", "C:%s"},
                                              {"no placeholder", "M", "C:no placeholder"},
                                              {"100% %d %s", "M", "C:100% %d M"},
                                              {"", "M", "C:"}};
  for (const auto& [format, msg, expected] : cases) {
    const QVXLogMessage log_template{format.c_str()};
    const std::string& message = msg;
    EXPECT_EQ(thrown_by([&] { check_retcode(DDS_RETCODE_ERROR, "C", log_template, message, false); }).second, expected);
  }
}

TEST(CheckRetcode, ThrowsTheSameButLogsNothingWhenAMaskForbidsIt) {
  struct Masks {
    unsigned int instrumentation, submodule;
    std::size_t lines;
  };
  for (const Masks& masks : {Masks{0x2, 0x10, 1}, Masks{~0x2u, ~0u, 0}, Masks{~0u, ~0x10u, 0}, Masks{0, 0, 0}}) {
    const LogRecorder log;
    DDSLog_g_instrumentationMask = masks.instrumentation;
    DDSLog_g_submoduleMask = masks.submodule;
    const auto [type, msg] =
        thrown_by([&] { check_retcode(DDS_RETCODE_NOT_ENABLED, "C", QVX_LOG_ANY_FAILURE_s, "M", false); });
    EXPECT_EQ(*type, typeid(zemtra::NotEnabledException));
    EXPECT_EQ(msg, "C:" + support::filled(QVX_LOG_ANY_FAILURE_s, "M"));
    EXPECT_EQ(log.lines().size(), masks.lines) << masks.instrumentation << " " << masks.submodule;
  }
}

}  // namespace
